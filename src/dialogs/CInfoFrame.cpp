#include "dialogs/CInfoFrame.h"

#include <wx/cursor.h>
#include <wx/intl.h>
#include <wx/panel.h>
#include <wx/stattext.h>

#include <algorithm>

CInfoFrame::CInfoFrame(wxWindow* parent, const wxColour& background, const wxString& text)
    : wxFrame(parent, wxID_ANY, wxGetTranslation("Busy"), wxDefaultPosition, wxDefaultSize,
              wxBORDER_SIMPLE | wxFRAME_TOOL_WINDOW),
      m_pPanel(nullptr),
      m_pText(nullptr) {
  SetBackgroundColour(background);

  m_pPanel = new wxPanel(this, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                         wxTAB_TRAVERSAL | wxBORDER_NONE);
  m_pText = new wxStaticText(m_pPanel, wxID_ANY, text);
  const wxCursor hourglass(wxCURSOR_WAIT);
  m_pPanel->SetCursor(hourglass);
  m_pText->SetCursor(hourglass);

  // At least 400 x 80 client pixels, more for a long text.
  const wxSize best = m_pText->GetBestSize();
  const int clientH = std::max(best.y, 40) + 40;
  const int clientW = std::max(best.x, 340) + 60;
  SetClientSize(clientW, clientH);
  m_pPanel->SetSize(GetClientSize());
  m_pText->Centre(wxBOTH);
  Centre(wxBOTH);
}

CInfoFrame::~CInfoFrame() {}
