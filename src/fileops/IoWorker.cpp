// The worker thread and the caller share one state object (Shared), kept
// alive by a shared_ptr on each side: the caller's IoWorker may go away while
// a stuck call still runs, and the thread then ends on its own.
//
// Calls get consecutive tickets and run strictly in that order, so "ticket t
// has run" is simply finished > t, one atomic counter that the caller can
// poll without a lock. Both sides spin for a few microseconds before they
// sleep: the caller right after handing a call over (a short call is done
// before a thread switch would be), the worker right after a call (the next
// call of the same file usually follows within microseconds).
#include "fileops/IoWorker.h"

#include <stdint.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

// How long the caller polls before it sleeps, and how long the idle worker
// polls for the next call before it sleeps. Waking a sleeping thread costs
// a tenth of a millisecond and more on a virtual machine, as long as moving
// a whole 1 MiB chunk takes: a caller that slept through every chunk made a
// copy of 1 GiB twice as slow. Two milliseconds cover a chunk; a call that
// takes longer (a slow disk) is waited for asleep.
constexpr auto kCallerSpin = std::chrono::microseconds(2000);
constexpr auto kWorkerSpin = std::chrono::microseconds(500);

inline void CpuPause() {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#elif defined(__aarch64__) || defined(__arm__)
  asm volatile("yield");
#endif
}

// Polls pred until it holds or the time is up; true when it holds. After the
// first couple of microseconds each round also yields the processor: when
// the other thread waits for this one's processor (a busy machine, a single
// core), it runs at once instead of after the whole spin.
template <typename Pred>
bool SpinFor(Clock::duration limit, Pred pred) {
  if (pred()) return true;
  const Clock::time_point start = Clock::now();
  const Clock::time_point yieldFrom = start + std::chrono::microseconds(2);
  const Clock::time_point end = start + limit;
  for (;;) {
    for (int i = 0; i < 16; ++i) {
      CpuPause();
      if (pred()) return true;
    }
    const Clock::time_point now = Clock::now();
    if (now >= end) return pred();
    if (now >= yieldFrom) {
      std::this_thread::yield();
      if (pred()) return true;
    }
  }
}

}  // namespace

struct IoWorker::Shared {
  std::mutex mutex;
  std::condition_variable work;  // the worker waits here for a call or the end
  std::condition_variable done;  // callers wait here for their call

  // Guarded by mutex.
  std::deque<std::function<void()>> queue;
  uint64_t nextTicket = 0;
  bool stop = false;
  std::thread thread;

  // Written under mutex, read without it while spinning.
  std::atomic<uint64_t> submitted{0};  // tickets handed over
  std::atomic<uint64_t> finished{0};   // tickets that have run
  std::atomic<uint64_t> abandonedUpTo{0};  // one past the last abandoned ticket

  bool Finished(uint64_t ticket) const {
    return finished.load(std::memory_order_acquire) > ticket;
  }

  static void Loop(std::shared_ptr<Shared> self);
};

void IoWorker::Shared::Loop(std::shared_ptr<Shared> self) {
  Shared& s = *self;
  std::unique_lock<std::mutex> lock(s.mutex);
  for (;;) {
    if (s.queue.empty()) {
      if (s.stop) break;
      lock.unlock();
      const uint64_t ran = s.finished.load(std::memory_order_relaxed);
      SpinFor(kWorkerSpin, [&] { return s.submitted.load(std::memory_order_acquire) != ran; });
      lock.lock();
      s.work.wait(lock, [&] { return !s.queue.empty() || s.stop; });
      continue;
    }
    std::function<void()> call = std::move(s.queue.front());
    s.queue.pop_front();
    lock.unlock();
    // A call must not throw: the thread has nobody to hand an exception to.
    call();
    call = nullptr;  // its captures go before the caller hears of the end
    lock.lock();
    s.finished.fetch_add(1, std::memory_order_release);
    s.done.notify_all();
  }
}

IoWorker::IoWorker() : m_shared(std::make_shared<Shared>()) {}

IoWorker::~IoWorker() {
  Shared& s = *m_shared;
  bool idle;
  {
    std::lock_guard<std::mutex> lock(s.mutex);
    s.stop = true;
    idle = s.finished.load(std::memory_order_relaxed) == s.nextTicket;
  }
  s.work.notify_all();
  if (!s.thread.joinable()) return;
  // An idle worker ends at once; one that still runs a call (a read that
  // hangs) is left to end by itself, holding its own reference to Shared.
  if (idle)
    s.thread.join();
  else
    s.thread.detach();
}

bool IoWorker::Run(std::function<void()> call, const std::function<bool()>& waiting,
                   int intervalMs) {
  if (!call) return true;
  Shared& s = *m_shared;
  uint64_t ticket;
  {
    std::lock_guard<std::mutex> lock(s.mutex);
    if (!s.thread.joinable()) s.thread = std::thread(&Shared::Loop, m_shared);
    ticket = s.nextTicket++;
    s.queue.push_back(std::move(call));
    s.submitted.store(s.nextTicket, std::memory_order_release);
  }
  s.work.notify_one();

  if (SpinFor(kCallerSpin, [&] { return s.Finished(ticket); })) return true;

  const auto slice = std::chrono::milliseconds(std::max(1, intervalMs));
  std::unique_lock<std::mutex> lock(s.mutex);
  for (;;) {
    if (s.done.wait_for(lock, slice, [&] { return s.Finished(ticket); })) return true;
    lock.unlock();
    const bool goOn = !waiting || waiting();
    if (!goOn) {
      // The call runs on; later calls queue up behind it.
      uint64_t mark = s.abandonedUpTo.load(std::memory_order_relaxed);
      while (mark < ticket + 1 &&
             !s.abandonedUpTo.compare_exchange_weak(mark, ticket + 1, std::memory_order_release,
                                                    std::memory_order_relaxed)) {
      }
      return false;
    }
    lock.lock();
  }
}

bool IoWorker::Busy() const {
  const Shared& s = *m_shared;
  return s.finished.load(std::memory_order_acquire) <
         s.abandonedUpTo.load(std::memory_order_acquire);
}
