// A timer that runs a function every period while the event loop (or a
// long walk's yields) runs, for tests that act in the middle of a walk.
#pragma once

#include <wx/timer.h>

#include <functional>
#include <utility>

namespace vt {

class TimerCall : public wxTimer {
 public:
  TimerCall(int periodMs, std::function<void()> call) : call_(std::move(call)) {
    Start(periodMs);
  }
  void Notify() override { call_(); }

 private:
  std::function<void()> call_;
};

}  // namespace vt
