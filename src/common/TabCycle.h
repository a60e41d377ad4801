// Keyboard navigation through a window's controls in a fixed order. Tab
// moves to the next control of the cycle, Shift+Tab to the one before, both
// wrapping around; controls that are hidden or disabled are passed over.
// The cycle names the controls the user works with, so composite controls
// (a list or tree inside its own panel) are stops of their own and picture
// buttons that have a key of their own elsewhere are not stops at all.
#pragma once

#include <wx/event.h>
#include <wx/window.h>

#include <vector>

namespace common {

// The stop that follows `current` (or precedes it when `forward` is false)
// among `usable.size()` stops, counting only usable ones and wrapping around.
// A `current` outside the cycle (-1) starts from the first usable stop going
// forward and from the last going back. Returns -1 when no stop is usable.
int NextTabStop(const std::vector<bool>& usable, int current, bool forward);

class TabCycle {
 public:
  void Add(wxWindow* stop) { m_stops.push_back(stop); }
  // The stop that holds the keyboard focus (the stop itself or a window
  // inside it), or -1.
  int FocusedStop() const;
  // Handles Tab and Shift+Tab (no Ctrl or Alt) by moving the focus along the
  // cycle; returns false for any other key, which the caller lets go on.
  bool HandleKey(const wxKeyEvent& event);
  const std::vector<wxWindow*>& Stops() const { return m_stops; }

 private:
  std::vector<wxWindow*> m_stops;
};

}  // namespace common
