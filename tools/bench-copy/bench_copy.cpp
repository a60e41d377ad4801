// Copying benchmark: copies three sets of data through the real progress
// dialog (shown, collecting first, then every chunk with its gauge, texts
// and cancel check) and with `cp` / `cp -r`, in the same run, on the same
// source and destination file system, caches warm, and prints the times and
// the ratio of the medians of three rounds (and, for information, beside cp
// followed by sync -f of the destination: the dialog writes the copy to the
// disk before it closes, cp does not):
//   one file of 1 GiB                        (goal: at most 1.05 x cp)
//   10,000 files of 4 KiB in 100 folders     (goal: at most 1.5 x cp -r)
//   1,000 files of 1 MiB in 10 folders       (goal: at most 1.2 x cp -r)
// After each copy through the dialog it checks the progress texts at the
// end (size done equal to the total, files done equal to the total plus the
// folders below the selected one, gauge 100, time left "00:00:00") and that
// the copy is byte for byte the source (diff -r).
//   bench_copy FOLDER_BASE [one|small|mid ...]
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "../bench_window.h"
#include "copy/CopyOutcome.h"
#include "copy/my_dialog_gauge.h"
#include "destination/Des_PathInfo.h"
#include "display/Conversion.h"

using bench::Median;
using bench::Now;

namespace {

const size_t kMiB = 1024 * 1024;

bool Run(const std::string& command) { return std::system(command.c_str()) == 0; }

std::string Quoted(const std::string& path) { return "'" + path + "'"; }

// A file of varied bytes (each MiB differs from the others).
bool MakeFile(const std::string& path, size_t bytes, uint64_t seed) {
  const int fd = open(path.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0644);
  if (fd < 0) return false;
  std::vector<uint64_t> block(std::min(bytes, kMiB) / 8 + 1);
  uint64_t x = seed * 0x9E3779B97F4A7C15ull + 1;
  bool ok = true;
  for (size_t done = 0; ok && done < bytes;) {
    for (uint64_t& w : block) {
      x ^= x << 13;
      x ^= x >> 7;
      x ^= x << 17;
      w = x;
    }
    const size_t n = std::min(bytes - done, block.size() * 8);
    ok = write(fd, block.data(), n) == static_cast<ssize_t>(n);
    done += n;
  }
  return close(fd) == 0 && ok;
}

// One set of data: where it lies, how the dialog is given it and how cp
// copies it.
struct DataSet {
  std::string key;
  std::string title;
  double goal;
  int files;
  int folders;
  int64_t bytes;
  bool treeSource;    // a folder copied whole (cp -r), else one selected file (cp)
  std::string name;   // the folder or the file below the source base
};

bool MakeData(const DataSet& set, const std::string& src) {
  const std::string root = src + "/" + set.key;
  if (mkdir(root.c_str(), 0755) != 0) return false;
  if (!set.treeSource) return MakeFile(root + "/" + set.name, static_cast<size_t>(set.bytes), 1);
  const std::string top = root + "/" + set.name;
  if (mkdir(top.c_str(), 0755) != 0) return false;
  const int perFolder = set.files / set.folders;
  const size_t size = static_cast<size_t>(set.bytes / set.files);
  for (int d = 0; d < set.folders; ++d) {
    char folder[600];
    snprintf(folder, sizeof folder, "%s/folder %03d", top.c_str(), d);
    if (mkdir(folder, 0755) != 0) return false;
    for (int f = 0; f < perFolder; ++f) {
      char file[700];
      snprintf(file, sizeof file, "%s/file %04d.dat", folder, f);
      if (!MakeFile(file, size, static_cast<uint64_t>(d) * 100000 + f + 1)) return false;
    }
  }
  return true;
}

// What the dialog showed when the copy ended.
struct EndTexts {
  wxString totalFiles, doneFiles, totalSize, doneSize, timeLeft;
  int gauge = -1;
};

// Copies the set through the progress dialog over `owner`; diagnostics go
// to `log`. Returns the seconds from opening the dialog until it has gone.
double CopyOurWay(wxWindow* owner, const DataSet& set, const std::string& src,
                  const std::string& dst, const std::string& log, EndTexts* texts,
                  int64_t* result) {
  const std::string from = src + "/" + set.key, to = dst + "/" + set.key;
  mkdir(to.c_str(), 0755);
  if (set.treeSource) {
    // The copy command creates the folder first and copies into it.
    mkdir((to + "/" + set.name).c_str(), 0755);
    g_Des_PathInfo.m_sourcePath = wxString::FromUTF8(from + "/" + set.name);
    g_Des_PathInfo.m_sourceItems.Clear();
    g_Des_PathInfo.m_destPath = wxString::FromUTF8(to + "/" + set.name);
  } else {
    g_Des_PathInfo.m_sourcePath = wxString::FromUTF8(from + "/");
    g_Des_PathInfo.m_sourceItems.Clear();
    g_Des_PathInfo.m_sourceItems.Add(wxString::FromUTF8(set.name));
    g_Des_PathInfo.m_destPath = wxString::FromUTF8(to + "/");
  }
  g_Des_PathInfo.m_result = DES_RESULT_OK;
  g_lastCopyOutcome = CopyOutcome();
  bench::StdoutToFile diagnostics(log);
  const double start = Now();
  // Runs the whole copy and destroys itself (deferred): it is still there
  // to be read until the next idle time.
  my_dialog_gauge* dialog = new my_dialog_gauge(owner, -1, "Copying Data", wxPoint(250, 200),
                                                wxSize(500, 255), wxDEFAULT_DIALOG_STYLE);
  texts->totalFiles = dialog->m_totalFilesText->GetLabel();
  texts->doneFiles = dialog->m_doneFilesText->GetLabel();
  texts->totalSize = dialog->m_totalSizeText->GetLabel();
  texts->doneSize = dialog->m_doneSizeText->GetLabel();
  texts->timeLeft = dialog->m_timeLeftText->GetLabel();
  texts->gauge = dialog->m_gauge->GetValue();
  wxTheApp->ProcessPendingEvents();
  wxTheApp->ProcessIdle();
  *result = g_lastCopyOutcome.result;
  return Now() - start;
}

// Copies the set with cp; *synced receives cp's time plus that of writing
// the destination file system to the disk afterwards (sync -f), which the
// dialog does before it closes.
double CopyWithCp(const DataSet& set, const std::string& src, const std::string& dst, bool* ok,
                  double* synced) {
  const std::string from = src + "/" + set.key, to = dst + "/" + set.key;
  mkdir(to.c_str(), 0755);
  const std::string cmd =
      set.treeSource ? "cp -r " + Quoted(from + "/" + set.name) + " " + Quoted(to + "/")
                     : "cp " + Quoted(from + "/" + set.name) + " " + Quoted(to + "/" + set.name);
  const double start = Now();
  *ok = Run(cmd);
  const double copied = Now() - start;
  *ok = Run("sync -f " + Quoted(to)) && *ok;
  *synced = Now() - start;
  return copied;
}

bool Identical(const DataSet& set, const std::string& src, const std::string& dst) {
  return Run("diff -r -q " + Quoted(src + "/" + set.key) + " " + Quoted(dst + "/" + set.key) +
             " >/dev/null");
}

// Empties the destination. Its files go before the kernel writes them
// back, so no copy pays for the one before it; a sync here would (on this
// ext4 with online discard, the next copy of 1 GiB then took 2 to 4 times
// as long in one round of three, cp and the dialog alike).
void Clear(const std::string& dst) {
  Run("rm -rf " + Quoted(dst) + " && mkdir -p " + Quoted(dst));
}

wxString Thousands(long long value) {
  return Conversion_Str(wxString::Format("%lld", value));
}

// The texts the dialog must show at the end of a whole copy of the set.
bool CheckTexts(const DataSet& set, const EndTexts& t, std::string* why) {
  const wxString files = Thousands(set.files);
  // The done count takes in every item handled: the folders below the
  // selected one too, which the total (files only) leaves out.
  const wxString done = Thousands(set.files + set.folders);
  const wxString size = Thousands(set.bytes / 1024) + " KB";
  std::string bad;
  if (t.totalFiles != files) bad += " total files \"" + t.totalFiles.utf8_string() + "\"";
  if (t.doneFiles != done) bad += " done files \"" + t.doneFiles.utf8_string() + "\"";
  if (t.totalSize != size) bad += " total size \"" + t.totalSize.utf8_string() + "\"";
  if (t.doneSize != t.totalSize) bad += " done size \"" + t.doneSize.utf8_string() + "\"";
  if (t.gauge != 100) bad += " gauge " + std::to_string(t.gauge);
  if (t.timeLeft != "00:00:00") bad += " time left \"" + t.timeLeft.utf8_string() + "\"";
  *why = bad.empty() ? "files " + t.doneFiles.utf8_string() + " / " + t.totalFiles.utf8_string() +
                           ", size " + t.doneSize.utf8_string() + " / " +
                           t.totalSize.utf8_string() + ", gauge 100, time left 00:00:00"
                     : "WRONG:" + bad + " (expected files " + done.utf8_string() + " / " +
                           files.utf8_string() + ", size " + size.utf8_string() + ")";
  return bad.empty();
}

}  // namespace

int main(int argc, char** argv) {
  const std::string base = argc > 1 ? argv[1] : "/tmp/vantori-bench-copy";
  std::vector<std::string> wanted;
  for (int i = 2; i < argc; ++i) wanted.push_back(argv[i]);
  wxFrame* owner = bench::StartWindow(argc, argv, "bench-copy");
  if (owner == nullptr) return 2;

  const std::vector<DataSet> sets = {
      {"one", "one file of 1 GiB", 1.05, 1, 0, 1024 * static_cast<int64_t>(kMiB), false, "big.bin"},
      {"small", "10,000 files of 4 KiB in 100 folders", 1.5, 10000, 100, 10000 * 4096LL, true,
       "small"},
      {"mid", "1,000 files of 1 MiB in 10 folders", 1.2, 1000, 10, 1000 * static_cast<int64_t>(kMiB),
       true, "mid"},
  };
  // More rounds steady the medians on a busy machine (BENCH_ROUNDS, odd).
  const char* roundsText = getenv("BENCH_ROUNDS");
  const int rounds = roundsText != nullptr && atoi(roundsText) > 0 ? atoi(roundsText) : 3;
  const std::string src = base + "/src", dst = base + "/dst";
  Run("rm -rf " + Quoted(base) + " && mkdir -p " + Quoted(src) + " " + Quoted(dst));
  printf("copying on %s: the progress dialog beside cp, medians of %d rounds\n", base.c_str(),
         rounds);
  fflush(stdout);
  bool allOk = true;
  for (const DataSet& set : sets) {
    if (!wanted.empty() && std::find(wanted.begin(), wanted.end(), set.key) == wanted.end())
      continue;
    if (!MakeData(set, src)) {
      fprintf(stderr, "bench-copy: cannot build %s under %s\n", set.title.c_str(), src.c_str());
      return 1;
    }
    sync();
    // Warm: the source is read once (by cp) before anything is timed.
    bool ok = false;
    double ignored = 0;
    CopyWithCp(set, src, dst, &ok, &ignored);
    Clear(dst);
    std::vector<double> ours, cps, cpSyncs;
    bool setOk = ok, allSame = true;
    std::string texts;
    for (int round = 0; round < rounds; ++round) {
      double t1 = 0, t2 = 0, t3 = 0;
      EndTexts end;
      int64_t result = 0;
      bool cpOk = false, same = false, textsOk = false;
      auto ourRun = [&] {
        Clear(dst);
        t1 = CopyOurWay(owner, set, src, dst, base + "/diagnostics.log", &end, &result);
        textsOk = CheckTexts(set, end, &texts);
        same = result == 1 && Identical(set, src, dst);
        Clear(dst);
      };
      auto cpRun = [&] {
        Clear(dst);
        t2 = CopyWithCp(set, src, dst, &cpOk, &t3);
        Clear(dst);
      };
      // Alternate which goes first.
      if (round % 2 == 0) {
        ourRun();
        cpRun();
      } else {
        cpRun();
        ourRun();
      }
      ours.push_back(t1);
      cps.push_back(t2);
      cpSyncs.push_back(t3);
      setOk = setOk && cpOk && same && textsOk;
      allSame = allSame && same;
      printf("  %s round %d: dialog %.3f s   cp %.3f s   ratio %.2f   cp + sync %.3f s%s%s%s\n",
             set.key.c_str(), round + 1, t1, t2, t1 / t2, t3, result == 1 ? "" : "   (result not 1)",
             same ? "" : "   (copy NOT identical)", textsOk ? "" : "   (texts WRONG)");
      if (!textsOk) printf("    %s\n", texts.c_str());
      fflush(stdout);
    }
    const double ratio = Median(ours) / Median(cps);
    const double fastest = *std::min_element(ours.begin(), ours.end()) /
                           *std::min_element(cps.begin(), cps.end());
    printf("%s: dialog %.3f s   %s %.3f s   ratio %.2f (goal: at most %.2f)%s\n",
           set.title.c_str(), Median(ours), set.treeSource ? "cp -r" : "cp", Median(cps), ratio,
           set.goal,
           ratio <= set.goal ? "   met"
                             : ("   MISSED by " + std::to_string(static_cast<int>(
                                                      (ratio / set.goal - 1) * 100 + 0.5)) +
                                " %").c_str());
    printf("  fastest rounds: ratio %.2f\n", fastest);
    printf("  beside cp + sync -f of the destination (median %.3f s): ratio %.2f\n",
           Median(cpSyncs), Median(ours) / Median(cpSyncs));
    printf("  progress texts at the end: %s\n  copy identical to the source (diff -r): %s\n",
           texts.c_str(), allSame ? "yes" : "NO");
    fflush(stdout);
    allOk = allOk && setOk;
    Run("rm -rf " + Quoted(src + "/" + set.key));
  }
  bench::EndWindow(owner);
  return allOk ? 0 : 1;
}
