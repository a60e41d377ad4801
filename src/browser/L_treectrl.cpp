#include "browser/L_treectrl.h"

BEGIN_EVENT_TABLE(L_treectrl, wxTreeCtrl)
  EVT_LEFT_DOWN(L_treectrl::OnMouseLeftDclick)
  EVT_RIGHT_DOWN(L_treectrl::OnMouseRightDown)
END_EVENT_TABLE()

L_treectrl::L_treectrl(wxWindow* parent, int id, const wxPoint& pos, const wxSize& size,
                       long style)
    : wxTreeCtrl(parent, id, pos, size, style) {}

void L_treectrl::OnMouseLeftDclick(wxMouseEvent& event) {
  if (m_pressNotice) m_pressNotice();
  event.Skip();
}

void L_treectrl::OnMouseRightDown(wxMouseEvent& event) {
  if (m_pressNotice) m_pressNotice();
  event.Skip();
}
