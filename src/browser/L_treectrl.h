// The visible tree inside my_DirTreeCtrl (window id 1004). Mouse presses make
// the tree the last focused source pane and tell the frame whether a volume
// root or a folder is current.
#pragma once

#include <wx/treectrl.h>

class my_DirTreeCtrl;

class L_treectrl : public wxTreeCtrl {
 public:
  L_treectrl(wxWindow* parent, my_DirTreeCtrl* owner, int id, const wxPoint& pos,
             const wxSize& size, long style);

  void OnMouseLeftDclick(wxMouseEvent& event);  // handles the single left press
  void OnMouseRightDown(wxMouseEvent& event);

 private:
  void NotePress();

  my_DirTreeCtrl* m_owner;

  DECLARE_EVENT_TABLE()
};
