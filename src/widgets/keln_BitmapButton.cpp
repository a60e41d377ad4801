#include "widgets/keln_BitmapButton.h"

#include <wx/dcclient.h>
#include <wx/dcmemory.h>

BEGIN_EVENT_TABLE(keln_BitmapButton, wxPanel)
  EVT_PAINT(keln_BitmapButton::OnPaint)
  EVT_MOUSE_EVENTS(keln_BitmapButton::OnMouseEvent)
  EVT_CHAR(keln_BitmapButton::OnChar)
  EVT_KEY_DOWN(keln_BitmapButton::OnKeyDown_s)
  EVT_KEY_UP(keln_BitmapButton::OnKeyUp_s)
  EVT_SET_FOCUS(keln_BitmapButton::OnSetFocus)
  EVT_KILL_FOCUS(keln_BitmapButton::OnKillFocus)
END_EVENT_TABLE()

keln_BitmapButton::keln_BitmapButton(wxWindow* parent, int id, const wxString& caption,
                                     const wxPoint& pos, const wxSize& size, bool flag)
    : wxPanel(parent, -1, pos, size, wxTAB_TRAVERSAL | wxBORDER_NONE),
      m_pParent(parent),
      m_nId(id),
      m_nState(STATE_NORMAL),
      m_strCaption(caption),
      m_bmpNormal(wxNullBitmap),
      m_bmpSelect(wxNullBitmap),
      m_bmpDisabled(wxNullBitmap),
      m_bmpHover(wxNullBitmap),
      m_bHover(false),
      m_bFlag(flag),
      m_bEnable(true),
      m_nPaintCount(0) {}

keln_BitmapButton::~keln_BitmapButton() {}

void keln_BitmapButton::SetBitmap_Normal(const wxBitmap& bitmap) { m_bmpNormal = bitmap; }
void keln_BitmapButton::SetBitmap_Hover(const wxBitmap& bitmap) { m_bmpHover = bitmap; }
void keln_BitmapButton::SetBitmap_Select(const wxBitmap& bitmap) { m_bmpSelect = bitmap; }
void keln_BitmapButton::SetBitmap_Disabled(const wxBitmap& bitmap) { m_bmpDisabled = bitmap; }

void keln_BitmapButton::keln_Enable() {
  m_nState = STATE_NORMAL;
  m_bEnable = true;
  Refresh();
}

void keln_BitmapButton::keln_Disable() {
  m_nState = STATE_DISABLED;
  m_bEnable = false;
  Refresh();
}

// State 3 is never entered and has no picture.
const wxBitmap& keln_BitmapButton::StateBitmap() const {
  switch (m_nState) {
    case STATE_DISABLED: return m_bmpDisabled;
    case STATE_OVER: return m_bmpSelect;
    case STATE_UNUSED: return wxNullBitmap;
    case STATE_PRESSED: return m_bmpHover;
    default: return m_bmpNormal;
  }
}

const wxBitmap& keln_BitmapButton::GetStateBitmap() const { return StateBitmap(); }

void keln_BitmapButton::OnPaint(wxPaintEvent& event) {
  wxPaintDC dc(this);
  dc.SetBackgroundMode(wxBRUSHSTYLE_TRANSPARENT);
  ++m_nPaintCount;
  // The background layer has no picture: it draws the caption alone, which
  // the state layer then draws over once more.
  DrwonBitmap(dc, wxNullBitmap);
  DrwonBitmap(dc, StateBitmap());
  event.Skip();
}

void keln_BitmapButton::DrwonBitmap(wxDC& dc, const wxBitmap& bitmap) {
  if (bitmap.IsOk()) {
    wxMemoryDC mem;
    mem.SelectObjectAsSource(bitmap);
    dc.Blit(0, 0, bitmap.GetWidth(), bitmap.GetHeight(), &mem, 0, 0, wxCOPY, true);
    mem.SelectObject(wxNullBitmap);
  }
  wxCoord tw = 0, th = 0;
  dc.GetTextExtent(m_strCaption, &tw, &th);
  const wxSize size = GetSize();
  dc.DrawText(m_strCaption, (size.x - tw) / 2, (size.y - th) / 2);
}

void keln_BitmapButton::PostClick() {
  wxCommandEvent click(wxEVT_COMMAND_BUTTON_CLICKED, m_nId);
  click.SetEventObject(this);
  wxPostEvent(m_pParent, click);
}

void keln_BitmapButton::OnMouseEvent(wxMouseEvent& event) {
  if (!m_bEnable) {
    // Disabled: only the hovering flag follows the mouse.
    if (event.Moving())
      m_bHover = true;
    else if (event.Leaving())
      m_bHover = false;
    return;
  }

  const int before = m_nState;
  if (event.Moving()) {
    if (!m_bHover) {
      m_bHover = true;
      m_nState = STATE_OVER;
    }
  } else if (event.LeftDown()) {
    m_nState = STATE_PRESSED;
  } else if (event.LeftUp()) {
    // Only a release that ends a press on this button is a click.
    if (m_nState == STATE_PRESSED) {
      m_nState = STATE_NORMAL;
      PostClick();
    }
  } else if (event.Leaving()) {
    m_nState = STATE_NORMAL;
    m_bHover = false;
  }
  if (m_nState != before) Refresh();
  event.Skip();
}

void keln_BitmapButton::OnChar(wxKeyEvent& event) {
  // Enter clicks, even while the button is disabled.
  if (event.GetKeyCode() == 13) {
    PostClick();
    m_nState = STATE_PRESSED;
  }
  event.Skip();
}

void keln_BitmapButton::OnKeyDown_s(wxKeyEvent& event) { event.Skip(); }

void keln_BitmapButton::OnKeyUp_s(wxKeyEvent& event) { event.Skip(); }

void keln_BitmapButton::OnSetFocus(wxFocusEvent& event) {
  if (!m_bEnable) return;
  m_nState = STATE_PRESSED;
  Refresh();
  event.Skip();
}

void keln_BitmapButton::OnKillFocus(wxFocusEvent& event) {
  if (!m_bEnable) return;
  m_nState = STATE_NORMAL;
  Refresh();
  event.Skip();
}
