#include "browser/L_treectrl.h"

#include "browser/my_DirTreeCtrl.h"
#include "common/CustomEvents.h"

BEGIN_EVENT_TABLE(L_treectrl, wxTreeCtrl)
  EVT_LEFT_DOWN(L_treectrl::OnMouseLeftDclick)
  EVT_RIGHT_DOWN(L_treectrl::OnMouseRightDown)
END_EVENT_TABLE()

L_treectrl::L_treectrl(wxWindow* parent, my_DirTreeCtrl* owner, int id, const wxPoint& pos,
                       const wxSize& size, long style)
    : wxTreeCtrl(parent, id, pos, size, style), m_owner(owner) {}

void L_treectrl::NotePress() {
  if (m_owner == nullptr) return;
  m_owner->SetIsLastFocus_treectrl(true);  // the list's flag goes with it (one pane)
  PostMyCustomCommand(GetParent(),
                      m_owner->GetSelIsFolder() ? MYCMD_TREE_ENABLE_COPY : MYCMD_TREE_DISABLE_COPY);
}

void L_treectrl::OnMouseLeftDclick(wxMouseEvent& event) {
  NotePress();
  event.Skip();
}

void L_treectrl::OnMouseRightDown(wxMouseEvent& event) {
  NotePress();
  event.Skip();
}
