#include "shell/fore_message.h"

#include <wx/frame.h>
#include <wx/intl.h>
#include <wx/weakref.h>

#include <cstdio>

#include "disk/View_Disk_Info.h"
#include "shell/my_frame.h"

namespace {
// The main frame as a window of its own.
const int kMainFrameId = 10003;
const wxPoint kMainFramePos(132, 104);
const wxSize kMainFrameSize(660, 540);
// wxBORDER_SIMPLE | wxTAB_TRAVERSAL | wxWANTS_CHARS and the bit 0x10.
const long kMainFrameStyle = 0x20c0010;
const int kTickMs = 10;
}  // namespace

BEGIN_EVENT_TABLE(fore_message, wxDialog)
  EVT_PAINT(fore_message::OnPaint)
  EVT_TIMER(wxID_ANY, fore_message::OnTimerEvent)
END_EVENT_TABLE()

fore_message::fore_message(wxWindow* parent, int id, const wxString& title, const wxPoint& pos,
                           const wxSize& size, long style, const wxString& name)
    : wxDialog(parent, id, title, pos, size, style, name), m_mainFrame(nullptr), m_painted(0) {
  m_timer.SetOwner(this, -1);
  m_timer.Start(kTickMs, wxTIMER_CONTINUOUS);
  m_painted = 0;
}

fore_message::~fore_message() { m_timer.Stop(); }

void fore_message::OnPaint(wxPaintEvent& event) {
  if (m_painted == 0) m_painted = 1;
  event.Skip();
}

void fore_message::OnTimerEvent(wxTimerEvent& /*event*/) {
  static int nIsInistialized = 0;
  // Fixed output (the trace of the start-up), checked by tests.
  printf("nIsInistialized = %d\n", nIsInistialized);
  fflush(stdout);
  if (m_painted == 1) {
    g_AllDiskPartitionInf.UI_InitDevice();
    g_AllDiskPartitionInf.GetDiskParttionInfo();
    // The toolkit gives a panel no life without a parent: the main frame's
    // own window is a plain top-level frame at the main frame's place, whose
    // client area the main frame fills.
    wxString title = wxGetTranslation("Vantori");
    wxFrame* top = new wxFrame(nullptr, wxID_ANY, title, kMainFramePos, wxDefaultSize,
                               wxDEFAULT_FRAME_STYLE & ~(wxRESIZE_BORDER | wxMAXIMIZE_BOX));
    top->SetClientSize(kMainFrameSize);
    m_mainFrame = new my_frame(top, kMainFrameId, title, wxPoint(0, 0), kMainFrameSize,
                               kMainFrameStyle);
    // The Exit button destroys the main frame: its window goes with it.
    wxWeakRef<fore_message> self(this);
    my_frame* frame = m_mainFrame;
    m_mainFrame->Bind(wxEVT_DESTROY, [self, top, frame](wxWindowDestroyEvent& destroyed) {
      if (destroyed.GetEventObject() == frame) {
        if (self) self->m_mainFrame = nullptr;
        if (!top->IsBeingDeleted()) top->CallAfter([top] { top->Destroy(); });
      }
      destroyed.Skip();
    });
    m_mainFrame->Show(true);
    top->Show(true);
    Hide();
    m_timer.Stop();
  }
  ++nIsInistialized;
}
