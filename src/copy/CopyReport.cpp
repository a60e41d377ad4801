#include "copy/CopyReport.h"

#include <errno.h>
#include <stdio.h>

#include <wx/intl.h>

#include <algorithm>
#include <set>

#include "display/Conversion.h"
#include "display/PathBytes.h"

namespace {

// Stretches of a salvaged file named in its line; the rest are counted.
const size_t kRangesShown = 3;

wxString Grouped(int64_t n) {
  return Conversion_Str(wxString::Format("%lld", static_cast<long long>(n)));
}

// " (<reason>)", or nothing when there is no error number.
wxString Reason(int error) {
  if (error == 0) return wxString();
  return " (" + CopyErrorWords(error) + ")";
}

// The unreadable stretches as " (bytes 4,096-8,191, ... and 2 more)".
wxString Ranges(const std::vector<CopyRange>& ranges) {
  if (ranges.empty()) return wxString();
  wxString text = " (" + wxGetTranslation("bytes") + " ";
  const size_t shown = std::min(ranges.size(), kRangesShown);
  for (size_t i = 0; i < shown; ++i) {
    if (i > 0) text += ", ";
    const CopyRange& r = ranges[i];
    text += Grouped(r.offset) + "-" + Grouped(r.offset + std::max<int64_t>(r.length, 1) - 1);
  }
  if (ranges.size() > shown)
    text += wxString::Format(wxGetTranslation(" and %s more"), Grouped(ranges.size() - shown));
  return text + ")";
}

// The kinds whose item is a file of the job (counted in itemCount).
bool FileOfTheJob(int kind) {
  switch (kind) {
    case kCopyNotOpened:
    case kCopyReadFailed:
    case kCopyNotRemoved:
    case kCopySalvaged:
    case kCopyVanished:
    case kCopyTooLargeForFat:
    case kCopyNameRefused:
      return true;
    default:
      return false;
  }
}

}  // namespace

wxString CopyErrorWords(int error) {
  switch (error) {
    case EACCES:
    case EPERM:
      return wxGetTranslation("access denied");
    case ENOENT:
      return wxGetTranslation("no such file or folder");
    case EIO:
      return wxGetTranslation("the disk reported an error");
    case EROFS:
      return wxGetTranslation("the volume is read-only");
    case ENOSPC:
      return wxGetTranslation("no space left on the volume");
    case EDQUOT:
      return wxGetTranslation("the disk quota is used up");
    case EMFILE:
    case ENFILE:
      return wxGetTranslation("too many open files");
    case ENAMETOOLONG:
      return wxGetTranslation("the name is too long");
    case EINVAL:
      return wxGetTranslation("the name or request is not valid here");
    case EISDIR:
      return wxGetTranslation("a folder stands in its place");
    case ENOTDIR:
      return wxGetTranslation("a part of the path is not a folder");
    case EEXIST:
      return wxGetTranslation("something of that name exists already");
    case EBUSY:
    case ETXTBSY:
      return wxGetTranslation("the file is in use");
    case ELOOP:
      return wxGetTranslation("too many links in the path");
    case ENOMEM:
      return wxGetTranslation("out of memory");
    case ENXIO:
    case ENODEV:
      return wxGetTranslation("the device is not there");
    case ETIMEDOUT:
      return wxGetTranslation("the device did not answer in time");
    case EFBIG:
      return wxGetTranslation("the file is too large for the volume");
    default:
      return wxString::Format(wxGetTranslation("error %d"), error);
  }
}

wxString CopyReportPath(const std::string& pathBytes) {
  const wxString path = PathFromBytes(pathBytes);
  // A mounted volume's path: /mnt/<letter> and nothing or "/..." after it.
  if (path.StartsWith("/mnt/") && path.length() >= 6 && (path.length() == 6 || path[6] == '/'))
    return Conversion_Path(path, -1);
  return path;
}

wxString CopyProblemWords(const CopyProblem& problem) {
  switch (problem.kind) {
    case kCopyNotOpened:
      return wxGetTranslation("not copied: the file could not be opened") + Reason(problem.error);
    case kCopyReadFailed:
      if (problem.error == 0 || problem.error == EIO)
        return wxGetTranslation("not copied: the disk reported a read error");
      return wxGetTranslation("not copied: the file could not be read") + Reason(problem.error);
    case kCopyLoopSkipped:
      return wxGetTranslation("not entered: a link back to a folder that contains it");
    case kCopyLinkDangles:
      return wxGetTranslation("not copied: a link whose target is missing");
    case kCopyNotAFile:
      return wxGetTranslation("not copied: not a regular file (a device, pipe or socket)");
    case kCopyNotRemoved:
      return wxGetTranslation("not copied: its partial copy could not be removed from the destination") +
             Reason(problem.error);
    case kCopyUnreadable:
      return wxGetTranslation("not copied: the folder could not be read") + Reason(problem.error);
    case kCopySalvaged: {
      const int64_t kb = (std::max<int64_t>(problem.unreadableBytes, 0) + 1023) / 1024;
      return wxString::Format(wxGetTranslation("copied with %s KB unreadable, filled with zeros"),
                              Grouped(kb)) +
             Ranges(problem.unreadable);
    }
    case kCopyVanished:
      return wxGetTranslation("not copied: the file vanished");
    case kCopyTooLargeForFat:
      return wxGetTranslation("not copied: too large for a FAT volume (4 GB limit)");
    case kCopyNameRefused:
      return wxGetTranslation("not copied: the destination does not accept this name");
    default:
      return wxString::Format(wxGetTranslation("not copied (problem %d)"), problem.kind) +
             Reason(problem.error);
  }
}

wxString CopyProblemLine(const CopyProblem& problem) {
  return CopyReportPath(problem.path) + ": " + CopyProblemWords(problem);
}

wxString CopyTotalsLine(const CopyOutcome& outcome) {
  // An item may have more than one line; each is counted once.
  std::set<std::string> salvaged, notCopied, ofTheJob;
  for (const CopyProblem& p : outcome.problems) {
    (p.kind == kCopySalvaged ? salvaged : notCopied).insert(p.path);
    if (FileOfTheJob(p.kind)) ofTheJob.insert(p.path);
  }
  for (const std::string& path : notCopied) salvaged.erase(path);

  wxString text;
  if (outcome.result == 1) {
    const int copied = std::max(0, outcome.itemCount - static_cast<int>(ofTheJob.size()));
    text = wxString::Format(wxGetTranslation("%s file copied", "%s files copied", copied),
                            Grouped(copied));
  } else {
    wxString how;
    if (outcome.result == 10)
      how = wxGetTranslation("Copy stopped before its end");
    else if (outcome.result == -1)
      how = wxGetTranslation("Copy ended early, the destination is full");
    else
      how = wxGetTranslation("Copy ended early");
    text = how + ": " +
           wxString::Format(wxGetTranslation("%s KB of %s KB copied"),
                            Grouped(outcome.bytesCopied / 1024), Grouped(outcome.totalBytes / 1024));
  }
  if (!salvaged.empty())
    text += ", " + wxString::Format(wxGetTranslation("%s copied with unreadable parts"),
                                    Grouped(salvaged.size()));
  if (!notCopied.empty())
    text += ", " + wxString::Format(wxGetTranslation("%s not copied"), Grouped(notCopied.size()));
  return text;
}

wxArrayString CopyReportLines(const CopyOutcome& outcome) {
  wxArrayString lines;
  for (const CopyProblem& p : outcome.problems) lines.Add(CopyProblemLine(p));
  lines.Add(CopyTotalsLine(outcome));
  return lines;
}

wxString CopyReportText(const wxArrayString& lines, size_t maxLines) {
  maxLines = std::max<size_t>(maxLines, 2);
  wxString text;
  if (lines.size() <= maxLines) {
    for (const wxString& line : lines) text += line + "\n";
    return text;
  }
  const size_t kept = maxLines - 2;
  for (size_t i = 0; i < kept; ++i) text += lines[i] + "\n";
  const size_t left = lines.size() - 1 - kept;
  text += wxString::Format(wxGetTranslation("... %s more lines, all on standard output"),
                           Grouped(left)) +
          "\n";
  return text + lines.Last() + "\n";
}

void PrintCopyReport(const wxArrayString& lines) {
  for (const wxString& line : lines) printf("%s\n", static_cast<const char*>(line.utf8_str()));
  fflush(stdout);
}

bool CopyReportDue(const CopyOutcome& outcome) {
  return !outcome.problems.empty() && !outcome.reported;
}
