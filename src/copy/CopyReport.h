// The report at the end of a copy: one line per item that was not copied as
// it should have been (its drive-letter path and what happened, in words)
// and a last line with the totals. The same lines go to the report window
// and to standard output.
#pragma once

#include <wx/arrstr.h>
#include <wx/string.h>

#include <stddef.h>

#include <string>

#include "copy/CopyOutcome.h"

// A system error as a short fixed English text ("access denied", ...);
// "error <n>" for one without a text of its own.
wxString CopyErrorWords(int error);

// A source path (bytes) as the user knows it: the drive-letter form of a
// mounted path, the path itself otherwise; bytes that are not UTF-8 show as
// "_".
wxString CopyReportPath(const std::string& pathBytes);

// What became of the item, in words ("not copied: the file vanished", ...).
wxString CopyProblemWords(const CopyProblem& problem);

// "<drive-letter path>: <words>".
wxString CopyProblemLine(const CopyProblem& problem);

// "12 files copied, 1 copied with unreadable parts, 3 not copied" for a copy
// that ran to its end; a copy that ended early says how and how many bytes
// were copied, since the files it did not reach are in no other figure.
wxString CopyTotalsLine(const CopyOutcome& outcome);

// Every problem's line in order, then the totals line.
wxArrayString CopyReportLines(const CopyOutcome& outcome);

// The text for the report window: the lines, one per line. With more than
// maxLines lines, the first maxLines - 2 are kept, then a line saying how
// many more there are (standard output has them all), then the totals line.
wxString CopyReportText(const wxArrayString& lines, size_t maxLines);

// Writes the lines to standard output, one per line, and flushes it.
void PrintCopyReport(const wxArrayString& lines);

// True when the outcome has problems and has not been reported yet.
bool CopyReportDue(const CopyOutcome& outcome);
