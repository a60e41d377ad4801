#include "copy/my_dialog_gauge.h"

#include <wx/intl.h>
#include <wx/statbox.h>
#include <wx/weakref.h>

#include "common/CustomEvents.h"
#include "common/FixedPosition.h"
#include "copy/CopyAnswer.h"
#include "copy/CopyOutcome.h"
#include "copy/copyfile.h"
#include "destination/Des_PathInfo.h"
#include "disk/View_Disk_Info.h"
#include "fileops/WalkStatus.h"

CopyOutcome g_lastCopyOutcome;

BEGIN_EVENT_TABLE(my_dialog_gauge, CopyProgressWindow)
  EVT_BUTTON(ID_GAUGE_CANCEL, my_dialog_gauge::OnCacle)
  EVT_CLOSE(my_dialog_gauge::OnClose)
END_EVENT_TABLE()

namespace {

wxStaticText* Label(wxWindow* parent, const wxString& text, int x, int y, int w, int h) {
  return new wxStaticText(parent, wxID_ANY, text, wxPoint(x, y), wxSize(w, h));
}

}  // namespace

my_dialog_gauge::my_dialog_gauge(wxWindow* parent, int id, const wxString& title,
                                 const wxPoint& pos, const wxSize& size, long style)
    : CopyProgressWindow(parent, id, title, pos, size, style),
      m_job(nullptr),
      m_running(false) {
  new wxStaticBox(this, wxID_ANY, wxGetTranslation("Total"), wxPoint(10, 15), wxSize(210, 90));
  Label(this, wxGetTranslation("Files: "), 25, 35, 50, 25);
  m_totalFilesText = Label(this, wxEmptyString, 65, 35, 135, 25);
  Label(this, wxGetTranslation("Size: "), 25, 65, 50, 25);
  m_totalSizeText = Label(this, wxEmptyString, 65, 65, 135, 25);
  new wxStaticBox(this, wxID_ANY, wxGetTranslation("Done"), wxPoint(270, 15), wxSize(210, 90));
  Label(this, wxGetTranslation("Files: "), 285, 35, 50, 25);
  m_doneFilesText = Label(this, wxEmptyString, 325, 35, 135, 25);
  Label(this, wxGetTranslation("Size: "), 285, 65, 50, 25);
  m_doneSizeText = Label(this, wxEmptyString, 325, 65, 135, 25);
  m_gauge = new wxGauge(this, wxID_ANY, 100, wxPoint(10, 120), wxSize(470, 25), wxGA_HORIZONTAL);
  m_gauge->SetValue(0);
  m_currentText = Label(this, wxEmptyString, 15, 160, 450, 25);
  Label(this, wxGetTranslation("Estimated time left: "), 15, 190, 150, 25);
  m_timeLeftText = Label(this, wxGetTranslation("00 : 00 : 00"), 155, 190, 200, 25);
  m_cancelButton = new wxButton(this, ID_GAUGE_CANCEL, wxGetTranslation("&Cancel"),
                                wxPoint(400, 215), wxSize(80, 28));

  if (m_parent) m_parent->Disable();
  SetBackgroundColour(wxColour(248, 248, 248));
  common::ShowAtFixedPosition(this, true, pos);
  Enable();
  Update();

  // The whole copy runs here. Every yield inside it may destroy this window
  // (its owner was closed): from then on nothing of it is touched, and the
  // job, which the destructor leaves to the run, is deleted here.
  wxWeakRef<my_dialog_gauge> alive(this);
  m_running = true;
  copyfile* job = new copyfile(g_Des_PathInfo.m_sourcePath, g_Des_PathInfo.m_destPath, this);
  m_job = job;
  int64_t result = kStatusStopped;
  if (job->GetAll_DirFileInfo() != kStatusStopped && alive && job->ConfirmFreeSpace(this) &&
      alive) {
    result = job->cp_DirFile();
    // What was copied reaches the disk before the window closes, however
    // the copy ended.
    if (alive) job->FlushDestination();
  }
  g_lastCopyOutcome = job->Outcome(result);
  if (!alive) {
    delete job;
    return;
  }
  m_running = false;
  Destroy();
}

my_dialog_gauge::~my_dialog_gauge() {
  const bool parentStays = m_parent && !m_parent->IsBeingDeleted();
  if (parentStays) m_parent->Enable();
  if (m_running) {
    // Torn down in the middle of the copy: the file being copied is closed
    // and its partial copy removed now; the run deletes the job.
    if (m_job) m_job->StopNow();
  } else {
    delete m_job;
  }
  m_job = nullptr;
  g_copy_dialog_return = COPY_ANSWER_NONE;
  if (!parentStays) return;
  g_AllDiskPartitionInf.GetDiskParttionInfo();
  wxCommandEvent done(wxEVT_MY_CUSTOM_COMMAND, MYCMD_OPEN_TARGET);
  wxPostEvent(m_parent, done);
}

void my_dialog_gauge::OnCacle(wxCommandEvent& /*event*/) { m_cancel = true; }

// The close box asks for the end of the copy; the window goes when the job
// has stopped.
void my_dialog_gauge::OnClose(wxCloseEvent& /*event*/) { m_cancel = true; }

void my_dialog_gauge::Update() { wxDialog::Update(); }
