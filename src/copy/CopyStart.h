// The first two steps of the copy command: whether the source selection can
// start a copy at all.
#pragma once

#include <wx/string.h>

enum CopyStart {
  COPY_START_GO = 0,          // go on to the destination
  COPY_START_NO_SELECTION,    // the list had the focus last and no row is selected
  COPY_START_DOT_ROW,         // the one selected row is "." or "..": stop silently
};

// selectedCount: selected rows of the source list; listFocusedLast: the list,
// not the tree, was the last source pane to have the focus; firstSelected
// and firstText: index and text of the first selected row (-1 and empty when
// none). A lone "." or ".." row (at row 0 or 1) is never a copy source.
CopyStart CheckCopyStart(int selectedCount, bool listFocusedLast, long firstSelected,
                         const wxString& firstText);
