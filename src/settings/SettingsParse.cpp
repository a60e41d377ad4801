#include "settings/SettingsParse.h"

#include <wx/convauto.h>
#include <wx/filename.h>
#include <wx/log.h>

#include <climits>

#include "common/ResourcePaths.h"

namespace settings {

int LeadingNumber(const wxString& s) {
  wxString::const_iterator it = s.begin();
  const wxString::const_iterator end = s.end();
  while (it != end && (*it == ' ' || *it == '\t' || *it == '\n' || *it == '\r' || *it == '\v' ||
                       *it == '\f'))
    ++it;
  bool negative = false;
  if (it != end && (*it == '+' || *it == '-')) {
    negative = (*it == '-');
    ++it;
  }
  long long value = 0;
  for (; it != end; ++it) {
    wxUniChar c = *it;
    if (c < '0' || c > '9') break;
    if (value <= static_cast<long long>(INT_MAX) + 1) value = value * 10 + (c - '0');
  }
  if (negative) value = -value;
  if (value > INT_MAX) return INT_MAX;
  if (value < INT_MIN) return INT_MIN;
  return static_cast<int>(value);
}

wxString TabColumn(const wxString& line, int col) {
  wxString s = line;
  for (int i = 0; i < col; ++i) s = s.AfterFirst('\t');
  return s.BeforeFirst('\t');
}

void NumberPair(const wxString& field, int& first, int& second) {
  first = LeadingNumber(field.BeforeFirst('|'));
  second = LeadingNumber(field.AfterFirst('|'));
}

void AppendNumberList(const wxString& list, wxArrayInt& out) {
  wxString rest = list;
  while (!rest.empty()) {
    out.Add(LeadingNumber(rest.BeforeFirst('|')));
    rest = rest.AfterFirst('|');
  }
}

bool OpenSettingsFile(const wxString& name, wxTextFile& file, wxString& path) {
  path = common::SettingsPath(name);
  wxLogNull noLog;
  return wxFileName::FileExists(path) && file.Open(path, wxConvAuto());
}

}  // namespace settings
