// Finding a dialog's child controls in GUI tests.
#pragma once

#include <wx/window.h>

namespace vt {

// The child of a window whose class and label match, or null.
template <class T>
T* ChildWithLabel(wxWindow* parent, const wxString& label) {
  for (wxWindow* w : parent->GetChildren()) {
    T* t = dynamic_cast<T*>(w);
    if (t != nullptr && t->GetLabel() == label) return t;
  }
  return nullptr;
}

}  // namespace vt
