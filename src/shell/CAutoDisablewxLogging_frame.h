// Scope guard of the main frame: the library's error logging is off while it
// exists (a failing folder creation would otherwise pop up the library's own
// log window beside the frame's message), and back as it was afterwards.
#pragma once

#include <wx/log.h>

class CAutoDisablewxLogging_frame {
 public:
  CAutoDisablewxLogging_frame() : m_wasEnabled(wxLog::EnableLogging(false)) {}
  ~CAutoDisablewxLogging_frame() { wxLog::EnableLogging(m_wasEnabled); }

  CAutoDisablewxLogging_frame(const CAutoDisablewxLogging_frame&) = delete;
  CAutoDisablewxLogging_frame& operator=(const CAutoDisablewxLogging_frame&) = delete;

 private:
  bool m_wasEnabled;
};
