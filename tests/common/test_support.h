// Helpers shared by the unit and GUI tests.
#pragma once

#include <functional>
#include <string>

namespace vt {

// Directory of the running test binary, with a trailing '/'. The module finds
// its settings there (setting/vantori/...), as it does beside the host.
std::string ExeDir();

// True when /mnt is the private tmpfs that tests/run-in-mntns.sh mounts; tests
// that create anything under /mnt must check this first and fail otherwise.
bool InPrivateMnt();

// Copies the shipped data/setting/vantori files beside the test binary again
// (tests that write their own settings files call this when they are done).
// A file that is not shipped is removed from beside the binary.
void InstallShippedSettings();

// Writes one file of setting/vantori/ beside the test binary (raw bytes).
void WriteSettingFile(const std::string& name, const std::string& bytes);
void RemoveSettingFile(const std::string& name);

// Writes bytes to a file, creating parent directories.
void WriteFile(const std::string& path, const std::string& bytes);
std::string ReadFile(const std::string& path);

// A death-test regex that matches the C library's assertion message
// "<prog>: <file>:<line>: <function>: Assertion `<expr>' failed." with every
// character of the fixed texts taken literally.
std::string AssertionRegex(const std::string& file, int line, const std::string& function,
                           const std::string& expr);
// The text escaped for use inside a GoogleTest death-test regex.
std::string RegexLiteral(const std::string& text);

// Runs pending events and idle handlers for about ms milliseconds.
void Pump(int ms = 50);
// The double-click time the GUI test main gives GTK (milliseconds). GTK
// pairs two clicks within this time into a double-click, and takes a press
// within twice this time of a double-click as a triple click.
constexpr int kDoubleClickMs = 120;
// Pumps until pred() holds or timeout_ms passes; returns pred().
bool PumpUntil(const std::function<bool()>& pred, int timeout_ms = 3000);

}  // namespace vt
