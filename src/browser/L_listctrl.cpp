#include "browser/L_listctrl.h"

#include "common/CustomEvents.h"

BEGIN_EVENT_TABLE(L_listctrl, wxListCtrl)
  EVT_CHAR(L_listctrl::OnChar)
  EVT_LEFT_DOWN(L_listctrl::OnMouseLeftDclick)
  EVT_RIGHT_DOWN(L_listctrl::OnMouseRightDown)
END_EVENT_TABLE()

L_listctrl::L_listctrl(wxWindow* parent, const ListingRows* rows, int id, const wxPoint& pos,
                       const wxSize& size, long style)
    : ListingListView(parent, id, pos, size, style, rows) {
  // The rows are drawn in an inner window of the list, which hands every
  // mouse event to this window's handlers first and acts on it only when
  // they let it go on: the event table below sees the presses on the rows.
}

// Key presses go on to the control that holds the list (its parent).
void L_listctrl::OnChar(wxKeyEvent& event) {
  if (GetParent() != nullptr) {
    wxKeyEvent copy(event);
    copy.SetEventObject(GetParent());
    wxPostEvent(GetParent()->GetEventHandler(), copy);
  }
  event.Skip();
}

void L_listctrl::OnMouseLeftDclick(wxMouseEvent& event) {
  if (m_pressNotice) PostMyCustomCommand(this, m_pressNotice());
  event.Skip();
}

void L_listctrl::OnMouseRightDown(wxMouseEvent& event) {
  if (!m_pressNotice) {
    event.Skip();
    return;
  }
  const int code = m_pressNotice();
  if (FirstSelected() > 0) {
    PostMyCustomCommand(this, code);
    event.Skip();
  }
  // nothing selected, or only the ".." row: the press is swallowed
}
