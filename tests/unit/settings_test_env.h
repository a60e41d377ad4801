// Test environment for the settings tables: a private in-memory configuration
// object installed as the process-wide one, singletons released before and
// after, and the shipped settings files put back afterwards.
#pragma once

#include <gtest/gtest.h>

#include <wx/config.h>
#include <wx/memconf.h>

#include <string>

#include "common/test_support.h"
#include "settings/CCtrlConfig.h"
#include "settings/CResCenter.h"

namespace vt {

class SettingsEnv {
 public:
  SettingsEnv() : m_config(new wxMemoryConfig) {
    ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
    m_previous = wxConfigBase::Set(m_config);
    settings::CCtrlConfig::UnInstance();
  }
  ~SettingsEnv() {
    settings::CCtrlConfig::UnInstance();
    wxConfigBase::Set(m_previous);
    delete m_config;
    InstallShippedSettings();
  }
  SettingsEnv(const SettingsEnv&) = delete;
  SettingsEnv& operator=(const SettingsEnv&) = delete;

  void SetLanguage(long lang) { m_config->Write(wxT("/Interface/language_Type"), lang); }
  wxConfigBase* Config() const { return m_config; }

 private:
  wxConfigBase* m_config;
  wxConfigBase* m_previous = nullptr;
};

// A header line followed by the given lines, each ended by "\n".
inline std::string Table(std::initializer_list<std::string> lines,
                         const std::string& header = "header") {
  std::string out = header + "\n";
  for (const std::string& l : lines) out += l + "\n";
  return out;
}

// text as UTF-16 little-endian bytes behind the byte order mark FF FE.
inline std::string Utf16LeWithBom(const std::u16string& text) {
  std::string out("\xFF\xFE", 2);
  for (char16_t c : text) {
    out += static_cast<char>(c & 0xFF);
    out += static_cast<char>((c >> 8) & 0xFF);
  }
  return out;
}

}  // namespace vt
