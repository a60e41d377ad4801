// The visible list inside my_listctrl (window id 1001). It forwards key
// presses to its owner and reports mouse presses, so that the owner can tell
// the main frame whether drives or a folder are shown.
#pragma once

#include "browser/ListingListView.h"

class my_listctrl;

class L_listctrl : public ListingListView {
 public:
  L_listctrl(wxWindow* parent, my_listctrl* owner, int id, const wxPoint& pos, const wxSize& size,
             long style);

  void OnChar(wxKeyEvent& event);
  void OnMouseLeftDclick(wxMouseEvent& event);  // handles the single left press
  void OnMouseRightDown(wxMouseEvent& event);

  my_listctrl* GetOwner() const { return m_owner; }

 private:
  my_listctrl* m_owner;

  DECLARE_EVENT_TABLE()
};
