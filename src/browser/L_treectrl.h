// The visible tree inside my_DirTreeCtrl (window id 1004). A mouse press
// runs the notice its owner gave it (the tree becomes the last focused
// source pane and the frame learns whether a volume root or a folder is
// current), then the tree acts on the press as usual.
#pragma once

#include <wx/treectrl.h>

#include <functional>

class L_treectrl : public wxTreeCtrl {
 public:
  L_treectrl(wxWindow* parent, int id, const wxPoint& pos, const wxSize& size, long style);

  // Run on every left and right press, before the tree handles it.
  void SetPressNotice(std::function<void()> notice) { m_pressNotice = std::move(notice); }

  void OnMouseLeftDclick(wxMouseEvent& event);  // handles the single left press
  void OnMouseRightDown(wxMouseEvent& event);

 private:
  std::function<void()> m_pressNotice;

  DECLARE_EVENT_TABLE()
};
