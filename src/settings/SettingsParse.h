// Field parsing shared by the settings tables (text.txt, resource.txt,
// controls.txt): TAB-separated columns, "|"-separated number lists.
#pragma once

#include <wx/arrstr.h>
#include <wx/dynarray.h>
#include <wx/string.h>
#include <wx/textfile.h>

namespace settings {

// The leading base-10 number of s (optional blanks and sign, then digits);
// text without one reads as 0. Values beyond the int range saturate.
int LeadingNumber(const wxString& s);

// Column col of a TAB-separated line: drop the part up to the first TAB col
// times, then keep the part before the first TAB. A line with fewer columns
// gives the empty string.
wxString TabColumn(const wxString& line, int col);

// "a|b" -> a and b as leading numbers ("16" -> 16 and 0, "" -> 0 and 0).
void NumberPair(const wxString& field, int& first, int& second);

// "3|4|5" -> 3, 4, 5 appended to out; "5|" -> 5; "" -> nothing; an empty
// piece between bars reads as 0.
void AppendNumberList(const wxString& list, wxArrayInt& out);

// Opens name under the executable's directory + "setting/vantori/" (the full
// path goes to path) with automatic encoding detection; a missing or
// unreadable file gives false and no message.
bool OpenSettingsFile(const wxString& name, wxTextFile& file, wxString& path);

}  // namespace settings
