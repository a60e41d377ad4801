#include "test_support.h"

#include <wx/app.h>
#include <wx/evtloop.h>
#include <wx/filename.h>
#include <wx/stdpaths.h>
#include <wx/utils.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

namespace vt {

std::string ExeDir() {
  char buf[4096];
  ssize_t n = readlink("/proc/self/exe", buf, sizeof(buf) - 1);
  if (n <= 0) return "./";
  buf[n] = 0;
  std::string p(buf);
  return p.substr(0, p.rfind('/') + 1);
}

bool InPrivateMnt() {
  // Only the last mount on /mnt is what /mnt shows.
  std::ifstream in("/proc/self/mountinfo");
  std::string line;
  bool privateTmpfs = false;
  while (std::getline(in, line)) {
    // fields: id parent major:minor root mountpoint options ... - fstype source opts
    std::istringstream ls(line);
    std::string id, parent, mm, root, point;
    ls >> id >> parent >> mm >> root >> point;
    if (point != "/mnt") continue;
    std::size_t dash = line.find(" - ");
    if (dash == std::string::npos) continue;
    std::istringstream rest(line.substr(dash + 3));
    std::string fstype, source;
    rest >> fstype >> source;
    privateTmpfs = fstype == "tmpfs" && source == "vantori-test-mnt";
  }
  return privateTmpfs;
}

static void MakeDirs(const std::string& path) {
  std::string cur;
  for (std::size_t i = 0; i < path.size(); ++i) {
    cur += path[i];
    if (path[i] == '/' && cur.size() > 1) mkdir(cur.c_str(), 0777);
  }
}

void WriteFile(const std::string& path, const std::string& bytes) {
  MakeDirs(path);
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

void InstallShippedSettings() {
  const char* names[] = {"text.txt", "resource.txt", "controls.txt", "config.ini"};
  for (const char* n : names) {
    std::string src = std::string(VANTORI_SOURCE_DIR) + "/data/setting/vantori/" + n;
    std::string dst = ExeDir() + "setting/vantori/" + n;
    struct stat st;
    if (stat(src.c_str(), &st) == 0)
      WriteFile(dst, ReadFile(src));
    else
      std::remove(dst.c_str());
  }
}

void WriteSettingFile(const std::string& name, const std::string& bytes) {
  WriteFile(ExeDir() + "setting/vantori/" + name, bytes);
}

void RemoveSettingFile(const std::string& name) {
  std::remove((ExeDir() + "setting/vantori/" + name).c_str());
}

std::string RegexLiteral(const std::string& text) {
  std::string out;
  for (char c : text) {
    if (c != 0 && std::strchr(".[]{}()\\*+?|^$", c)) out += '\\';
    out += c;
  }
  return out;
}

std::string AssertionRegex(const std::string& file, int line, const std::string& function,
                           const std::string& expr) {
  return RegexLiteral(": " + file + ":" + std::to_string(line) + ": " + function +
                      ": Assertion `" + expr + "' failed.");
}

void Pump(int ms) {
  auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
  do {
    if (wxTheApp) {
      wxTheApp->ProcessPendingEvents();
      wxYield();
      wxTheApp->ProcessIdle();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  } while (std::chrono::steady_clock::now() < end);
}

bool PumpUntil(const std::function<bool()>& pred, int timeout_ms) {
  auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
  while (!pred()) {
    if (std::chrono::steady_clock::now() >= end) return pred();
    Pump(10);
  }
  return true;
}

}  // namespace vt
