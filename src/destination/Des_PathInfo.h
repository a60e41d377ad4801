// The record passed between the main frame, the destination panel and the
// copy: what is copied from where to where, and how the panel was closed.
#pragma once

#include <wx/arrstr.h>
#include <wx/string.h>

enum {
  DES_RESULT_OK = 1057,
  DES_RESULT_CANCEL = 1058,
};

class Des_PathInfo {
 public:
  Des_PathInfo();

  wxArrayString m_sourceItems;  // names of the selected source items
  wxString m_sourcePath;        // mounted path of the source folder, e.g. /mnt/C/dir
  wxString m_destPath;          // mounted path of the destination folder
  int m_result;                 // DES_RESULT_OK or DES_RESULT_CANCEL
};

extern Des_PathInfo g_Des_PathInfo;
