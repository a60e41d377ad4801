// The host program: a top-level window that loads libvantori.so from its own
// directory and lets the module fill it.
#pragma once

#include <wx/app.h>
#include <wx/frame.h>

#include "VantoriModule.h"

class VantoriHostFrame : public wxFrame {
 public:
  VantoriHostFrame(const VantoriModule& module, bool printLayout);

 private:
  void OnClose(wxCloseEvent& event);
  void OnModuleDestroyed(wxWindowDestroyEvent& event);
  void PrintLayout();

  VantoriModule m_module;
  wxWindow* m_moduleWindow;
};

class VantoriHostApp : public wxApp {
 public:
  bool OnInit() override;
  int OnExit() override;
};

// Exit status when start-up stops before the window opens (-1: not stopped).
extern int g_startupExit;
