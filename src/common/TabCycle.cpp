#include "common/TabCycle.h"

namespace common {

int NextTabStop(const std::vector<bool>& usable, int current, bool forward) {
  const int count = static_cast<int>(usable.size());
  if (count == 0) return -1;
  int at = current;
  if (at < 0 || at >= count) at = forward ? count - 1 : 0;
  for (int step = 1; step <= count; ++step) {
    const int candidate = ((forward ? at + step : at - step) % count + count) % count;
    if (usable[candidate]) return candidate;
  }
  return -1;
}

int TabCycle::FocusedStop() const {
  wxWindow* focus = wxWindow::FindFocus();
  if (focus == nullptr) return -1;
  for (size_t i = 0; i < m_stops.size(); ++i)
    if (m_stops[i] == focus || m_stops[i]->IsDescendant(focus))
      return static_cast<int>(i);
  return -1;
}

bool TabCycle::HandleKey(const wxKeyEvent& event) {
  if (event.GetKeyCode() != WXK_TAB || event.ControlDown() || event.AltDown()) return false;
  std::vector<bool> usable;
  for (wxWindow* stop : m_stops) usable.push_back(stop->IsShownOnScreen() && stop->IsEnabled());
  const int next = NextTabStop(usable, FocusedStop(), !event.ShiftDown());
  if (next >= 0) m_stops[next]->SetFocus();
  return true;
}

}  // namespace common
