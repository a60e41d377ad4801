// Deleting benchmark: builds two identical folders of 10,000 files in 100
// folders under /tmp, deletes one the way the destination panel does (the
// progress dialog shown, counting first, then every removal with its gauge
// steps, current-item text and diagnostic lines) and the other with
// `rm -rf`, in the same run, and prints both times and their ratio. Three
// rounds; the ratio of the medians is the figure.
#include <cstdlib>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "../bench_window.h"
#include "destination/DeleteFileProgress.h"
#include "destination/DeleteFile_dialog.h"
#include "fileops/WalkStatus.h"

using bench::Median;
using bench::Now;

namespace {

const int kFolders = 100;
const int kFilesPerFolder = 100;

// 100 folders of 100 files of 100 bytes each.
bool MakeTree(const std::string& root) {
  if (mkdir(root.c_str(), 0755) != 0) return false;
  const std::string content(100, 'x');
  for (int d = 0; d < kFolders; ++d) {
    char folder[512];
    snprintf(folder, sizeof folder, "%s/folder %03d", root.c_str(), d);
    if (mkdir(folder, 0755) != 0) return false;
    for (int f = 0; f < kFilesPerFolder; ++f) {
      char file[600];
      snprintf(file, sizeof file, "%s/file %03d.txt", folder, f);
      const int fd = open(file, O_CREAT | O_WRONLY | O_TRUNC, 0644);
      if (fd < 0) return false;
      const bool ok = write(fd, content.data(), content.size()) == static_cast<ssize_t>(content.size());
      close(fd);
      if (!ok) return false;
    }
  }
  return true;
}

// The panel's way, with the dialog shown; diagnostics go to `log`.
double DeleteOurWay(wxWindow* owner, const std::string& root, const std::string& log, bool* ok) {
  bench::StdoutToFile diagnostics(log);
  const double start = Now();
  auto* dialog = new DeleteFile_dialog(owner, wxID_ANY, "Deleting Data", wxPoint(320, 230),
                                       wxSize(400, 225));
  dialog->Show();
  wxYieldIfNeeded();
  DeleteFileProgress run(dialog);
  const wxString target = wxString::FromUTF8(root);
  *ok = run.Count(target) != kStatusStopped &&
        run.DeleteContents(target) != kStatusStopped;
  if (*ok) run.RemoveTarget(target);
  *ok = *ok && run.FailedCount() == 0 && access(root.c_str(), F_OK) != 0 &&
        run.Deleting().fileCount == kFolders * kFilesPerFolder && run.Deleting().folderCount == kFolders;
  dialog->Destroy();
  wxTheApp->ProcessIdle();
  return Now() - start;
}

double DeleteWithRm(const std::string& root, bool* ok) {
  const std::string cmd = "rm -rf '" + root + "'";
  const double start = Now();
  *ok = std::system(cmd.c_str()) == 0 && access(root.c_str(), F_OK) != 0;
  return Now() - start;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string base = argc > 1 ? argv[1] : "/tmp/vantori-bench-delete";
  wxFrame* owner = bench::StartWindow(argc, argv, "bench-delete");
  if (owner == nullptr) return 2;

  std::system(("rm -rf '" + base + "' && mkdir -p '" + base + "'").c_str());
  std::vector<double> ours, rm;
  bool allOk = true;
  printf("deleting %d files in %d folders (%s)\n", kFolders * kFilesPerFolder, kFolders,
         base.c_str());
  for (int round = 0; round < 3; ++round) {
    const std::string a = base + "/ours", b = base + "/rm";
    if (!MakeTree(a) || !MakeTree(b)) {
      fprintf(stderr, "bench-delete: cannot build the trees under %s\n", base.c_str());
      return 1;
    }
    sync();
    bool ok1 = false, ok2 = false;
    // Alternate which goes first, so neither always meets a warmer cache.
    double t1, t2;
    if (round % 2 == 0) {
      t1 = DeleteOurWay(owner, a, base + "/diagnostics.log", &ok1);
      t2 = DeleteWithRm(b, &ok2);
    } else {
      t2 = DeleteWithRm(b, &ok2);
      t1 = DeleteOurWay(owner, a, base + "/diagnostics.log", &ok1);
    }
    allOk = allOk && ok1 && ok2;
    ours.push_back(t1);
    rm.push_back(t2);
    printf("round %d: panel %.3f s   rm -rf %.3f s   ratio %.2f%s\n", round + 1, t1, t2, t1 / t2,
           ok1 && ok2 ? "" : "   (NOT everything deleted)");
  }
  struct stat st;
  const long logBytes = stat((base + "/diagnostics.log").c_str(), &st) == 0 ? st.st_size : -1;
  printf("median: panel %.3f s   rm -rf %.3f s   ratio %.2f (goal: at most 2.00)\n",
         Median(ours), Median(rm), Median(ours) / Median(rm));
  printf("diagnostic lines of the last round: %ld bytes in %s/diagnostics.log\n", logBytes,
         base.c_str());
  bench::EndWindow(owner);
  return allOk ? 0 : 1;
}
