// Runs blocking file calls on a thread of its own, so that the thread that
// asked for them (the window's) keeps painting and can take a Cancel while
// one read of a failing disk hangs for half a minute.
//
// The caller hands over one call at a time and waits for it in short slices;
// between slices it is given the chance to run its event loop (the `waiting`
// callback). When `waiting` answers false the caller stops waiting: the call
// runs on to its end on the worker thread and its result is dropped, so a
// call must own (shared_ptr) everything it touches.
//
// A short call costs next to nothing: the caller first spins for a few
// microseconds before it sleeps, so copying many small files does not pay a
// thread switch per system call.
#pragma once

#include <functional>
#include <memory>

class IoWorker {
 public:
  IoWorker();
  // Never waits for a call that is still running (a stuck read): the thread
  // then ends by itself once that call returns.
  ~IoWorker();
  IoWorker(const IoWorker&) = delete;
  IoWorker& operator=(const IoWorker&) = delete;

  // Runs call on the worker thread (after any abandoned call that is still
  // running). Returns true once it has run; false when `waiting` answered
  // false first. `waiting` is called about every intervalMs milliseconds
  // while the call runs, never while it holds a lock.
  bool Run(std::function<void()> call, const std::function<bool()>& waiting,
           int intervalMs = 50);

  // True while an abandoned call is still running on the worker.
  bool Busy() const;

 private:
  struct Shared;
  std::shared_ptr<Shared> m_shared;
};
