#include "widgets/keln_ButMsg_Text.h"

#include <wx/brush.h>
#include <wx/dcclient.h>
#include <wx/pen.h>

BEGIN_EVENT_TABLE(keln_ButMsg_Text, wxPanel)
  EVT_PAINT(keln_ButMsg_Text::OnPaint)
END_EVENT_TABLE()

keln_ButMsg_Text::keln_ButMsg_Text(wxWindow* parent, int /*id*/, const wxString& text,
                                   const wxPoint& pos, const wxSize& size, long style)
    : wxPanel(parent, -1, pos, size, style), m_strText(text) {}

keln_ButMsg_Text::~keln_ButMsg_Text() {}

void keln_ButMsg_Text::OnPaint(wxPaintEvent& /*event*/) {
  wxPaintDC dc(this);
  int w = 0, h = 0;
  GetClientSize(&w, &h);
  dc.SetBrush(wxBrush(wxColour(255, 255, 225), wxBRUSHSTYLE_SOLID));
  dc.SetPen(wxPen(*wxBLACK, 1, wxPENSTYLE_SOLID));
  dc.DrawRectangle(0, 0, w, h);
  dc.DrawText(m_strText, 3, 2);
}
