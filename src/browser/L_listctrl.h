// The visible list inside my_listctrl (window id 1001). It forwards key
// presses to the control that holds it, and on a mouse press runs the notice
// its owner gave it, which answers the code that tells the main frame
// whether drives or a folder are shown.
#pragma once

#include <functional>

#include "browser/ListingListView.h"

class L_listctrl : public ListingListView {
 public:
  L_listctrl(wxWindow* parent, const ListingRows* rows, int id, const wxPoint& pos,
             const wxSize& size, long style);

  // Run on every left and right press on the rows, before the list acts on
  // it; returns the command code to post (drive list or folder shown).
  void SetPressNotice(std::function<int()> notice) { m_pressNotice = std::move(notice); }

  void OnChar(wxKeyEvent& event);
  void OnMouseLeftDclick(wxMouseEvent& event);  // handles the single left press
  void OnMouseRightDown(wxMouseEvent& event);

 private:
  std::function<int()> m_pressNotice;

  DECLARE_EVENT_TABLE()
};
