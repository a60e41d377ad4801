// What every Vantori program does first.
#pragma once

// Toolkit assertions are reported on standard error under the program's
// name ("vantori: toolkit check failed at ..."), never as a dialog that
// nobody on a rescue system can answer. program must stay valid.
void ReportToolkitChecksOnStderr(const char* program);

// File names on rescued disks are mostly UTF-8: the C library and the toolkit
// convert them as such even when the rescue system has no locale configured.
void UseUtf8Locale();
