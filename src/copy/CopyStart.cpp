#include "copy/CopyStart.h"

#include "browser/ListingLogic.h"

CopyStart CheckCopyStart(int selectedCount, bool listFocusedLast, long firstSelected,
                         const wxString& firstText) {
  if (selectedCount == 0 && listFocusedLast) return COPY_START_NO_SELECTION;
  if (selectedCount == 1 && (firstSelected == 0 || firstSelected == 1) &&
      listing::IsDotRowText(firstText))
    return COPY_START_DOT_ROW;
  return COPY_START_GO;
}
