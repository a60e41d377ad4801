#include "browser/L_listctrl.h"

#include "browser/my_listctrl.h"
#include "common/CustomEvents.h"

BEGIN_EVENT_TABLE(L_listctrl, wxListCtrl)
  EVT_CHAR(L_listctrl::OnChar)
  EVT_LEFT_DOWN(L_listctrl::OnMouseLeftDclick)
  EVT_RIGHT_DOWN(L_listctrl::OnMouseRightDown)
END_EVENT_TABLE()

L_listctrl::L_listctrl(wxWindow* parent, my_listctrl* owner, int id, const wxPoint& pos,
                       const wxSize& size, long style)
    : ListingListView(parent, id, pos, size, style, owner ? owner->GetRows() : nullptr),
      m_owner(owner) {
  // The rows are drawn in an inner window of the list, which hands every
  // mouse event to this window's handlers first and acts on it only when
  // they let it go on: the event table below sees the presses on the rows.
}

void L_listctrl::OnChar(wxKeyEvent& event) {
  if (m_owner != nullptr) {
    wxKeyEvent copy(event);
    copy.SetEventObject(m_owner);
    wxPostEvent(m_owner->GetEventHandler(), copy);
  }
  event.Skip();
}

void L_listctrl::OnMouseLeftDclick(wxMouseEvent& event) {
  if (m_owner != nullptr) {
    m_owner->NoteListClicked();
    PostMyCustomCommand(this, m_owner->GetCurrentListctrlPath().empty() ? MYCMD_LIST_DISABLE_COPY
                                                                        : MYCMD_LIST_ENABLE_COPY);
  }
  event.Skip();
}

void L_listctrl::OnMouseRightDown(wxMouseEvent& event) {
  if (m_owner == nullptr) {
    event.Skip();
    return;
  }
  m_owner->NoteListClicked();
  if (FirstSelected() > 0) {
    PostMyCustomCommand(this, m_owner->GetCurrentListctrlPath().empty() ? MYCMD_LIST_DISABLE_COPY
                                                                        : MYCMD_LIST_ENABLE_COPY);
    event.Skip();
  }
  // nothing selected, or only the ".." row: the press is swallowed
}
