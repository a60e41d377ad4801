// The skinned push button: a borderless panel that paints one bitmap per
// state with its caption centred on top, follows the mouse (hover, press,
// release), takes the keyboard focus, reacts to Enter and reports a click as
// an ordinary button-click command event posted to its parent.
#pragma once

#include <wx/bitmap.h>
#include <wx/dc.h>
#include <wx/event.h>
#include <wx/panel.h>
#include <wx/string.h>

class keln_BitmapButton : public wxPanel {
 public:
  // States: 0 normal, 1 disabled, 2 mouse over, 3 (never entered), 4 pressed
  // or focused.
  enum { STATE_NORMAL = 0, STATE_DISABLED = 1, STATE_OVER = 2, STATE_UNUSED = 3,
         STATE_PRESSED = 4 };

  // The panel itself has no id (-1); id is the command id the click carries.
  // flag is only stored.
  keln_BitmapButton(wxWindow* parent, int id, const wxString& caption,
                    const wxPoint& pos = wxDefaultPosition, const wxSize& size = wxDefaultSize,
                    bool flag = false);
  virtual ~keln_BitmapButton();

  // Each stores a copy; the button is not repainted. The picture given to
  // SetBitmap_Select shows while the mouse is over the button, the one given
  // to SetBitmap_Hover while it is pressed or focused.
  void SetBitmap_Normal(const wxBitmap& bitmap);
  void SetBitmap_Hover(const wxBitmap& bitmap);
  void SetBitmap_Select(const wxBitmap& bitmap);
  void SetBitmap_Disabled(const wxBitmap& bitmap);

  void keln_Enable();   // state 0, enabled; repaint
  void keln_Disable();  // state 1, not enabled; repaint

  int GetState() const { return m_nState; }
  bool IsHovering() const { return m_bHover; }
  bool IsKelnEnabled() const { return m_bEnable; }
  bool GetFlag() const { return m_bFlag; }
  int GetCommandId() const { return m_nId; }
  const wxString& GetCaption() const { return m_strCaption; }
  const wxBitmap& GetBitmap_Normal() const { return m_bmpNormal; }
  const wxBitmap& GetBitmap_Select() const { return m_bmpSelect; }
  const wxBitmap& GetBitmap_Disabled() const { return m_bmpDisabled; }
  const wxBitmap& GetBitmap_Hover() const { return m_bmpHover; }
  // The bitmap that the current state paints.
  const wxBitmap& GetStateBitmap() const;
  // Number of paint events handled so far.
  int GetPaintCount() const { return m_nPaintCount; }

 protected:
  void OnPaint(wxPaintEvent& event);
  void OnMouseEvent(wxMouseEvent& event);
  void OnChar(wxKeyEvent& event);
  void OnKeyDown_s(wxKeyEvent& event);
  void OnKeyUp_s(wxKeyEvent& event);
  void OnSetFocus(wxFocusEvent& event);
  void OnKillFocus(wxFocusEvent& event);

  // Copies bitmap (with its mask) to the top-left corner of the paint
  // context, then draws the caption centred; called from the paint handler
  // with its one paint context.
  void DrwonBitmap(wxDC& dc, const wxBitmap& bitmap);

 private:
  const wxBitmap& StateBitmap() const;
  void PostClick();

  wxWindow* m_pParent;
  int m_nId;
  int m_nState;
  wxString m_strCaption;
  wxBitmap m_bmpNormal;
  wxBitmap m_bmpSelect;
  wxBitmap m_bmpDisabled;
  wxBitmap m_bmpHover;
  bool m_bHover;
  bool m_bFlag;
  bool m_bEnable;
  int m_nPaintCount;

  DECLARE_EVENT_TABLE()
};
