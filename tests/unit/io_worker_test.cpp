// The worker thread for blocking file calls: calls run in the order they were
// handed over, on a thread of their own; a call the caller stopped waiting
// for runs on to its end, later calls queue behind it, and destroying the
// worker never waits for a stuck call.
//
// Stuck calls here wait for a flag the test sets (at most 10 s as a safety
// net), so every order asserted below is certain, not a matter of timing, and
// every call has ended, and its thread gone, before its test ends.
#include <gtest/gtest.h>

#include <dirent.h>
#include <time.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include "fileops/IoWorker.h"

namespace {

void SleepMs(int ms) { std::this_thread::sleep_for(std::chrono::milliseconds(ms)); }

// Polls pred every millisecond for up to timeoutMs; returns pred().
template <typename Pred>
bool WaitUntil(Pred pred, int timeoutMs = 10000) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  while (!pred() && std::chrono::steady_clock::now() < end) SleepMs(1);
  return pred();
}

// The threads of this process right now.
int ThreadCount() {
  int n = 0;
  DIR* d = opendir("/proc/self/task");
  if (d == nullptr) return -1;
  while (struct dirent* e = readdir(d))
    if (e->d_name[0] != '.') ++n;
  closedir(d);
  return n;
}

// A call that blocks until Release() (or 10 s): what a read of a failing
// disk looks like from the caller. Shared with the call through a
// shared_ptr, as every call's state must be.
struct Gate {
  std::atomic<bool> released{false};
  std::atomic<bool> started{false};
  std::atomic<bool> finished{false};
  void Release() { released = true; }
  std::function<void()> Call(std::shared_ptr<Gate> self) {
    return [self] {
      self->started = true;
      WaitUntil([&] { return self->released.load(); });
      self->finished = true;
    };
  }
};

const auto kKeepWaiting = [] { return true; };

TEST(IoWorker, RunsCallsInOrderOnAThreadOfItsOwn) {
  IoWorker worker;
  std::vector<int> order;  // touched by the worker thread only while a call runs
  std::thread::id where;
  for (int i = 0; i < 200; ++i)
    ASSERT_TRUE(worker.Run([&order, &where, i] {
      order.push_back(i);
      where = std::this_thread::get_id();
    }, kKeepWaiting));
  ASSERT_EQ(order.size(), 200u);
  for (int i = 0; i < 200; ++i) EXPECT_EQ(order[i], i);
  EXPECT_NE(where, std::this_thread::get_id());
  EXPECT_FALSE(worker.Busy());
}

TEST(IoWorker, AsksWaitingBetweenSlicesUntilTheCallEnds) {
  IoWorker worker;
  auto asked = std::make_shared<std::atomic<int>>(0);
  auto ended = std::make_shared<std::atomic<bool>>(false);
  // The call ends only after the caller was asked three times.
  const bool ran = worker.Run([asked, ended] {
    WaitUntil([&] { return asked->load() >= 3; });
    *ended = true;
  }, [asked] {
    ++*asked;
    return true;
  }, 5);
  EXPECT_TRUE(ran);
  EXPECT_TRUE(ended->load());
  EXPECT_GE(asked->load(), 3);
  EXPECT_FALSE(worker.Busy());
}

TEST(IoWorker, StopsWaitingForAStuckCallWhenWaitingSaysSo) {
  IoWorker worker;
  auto gate = std::make_shared<Gate>();
  int asked = 0;
  const bool ran = worker.Run(gate->Call(gate), [&asked] {
    ++asked;
    return false;
  }, 20);
  // Run came back while the call was still running, after one question.
  EXPECT_FALSE(ran);
  EXPECT_EQ(asked, 1);
  EXPECT_TRUE(WaitUntil([&] { return gate->started.load(); }));
  EXPECT_FALSE(gate->finished.load());
  EXPECT_TRUE(worker.Busy());
  gate->Release();
  EXPECT_TRUE(WaitUntil([&] { return !worker.Busy(); }));
  EXPECT_TRUE(gate->finished.load());
}

TEST(IoWorker, ACallAfterAnAbandonedOneRunsAfterIt) {
  IoWorker worker;
  auto gate = std::make_shared<Gate>();
  auto order = std::make_shared<std::vector<int>>();
  ASSERT_FALSE(worker.Run([gate, order] {
    gate->Call(gate)();
    order->push_back(1);
  }, [] { return false; }, 10));
  ASSERT_TRUE(worker.Busy());
  // The second call waits behind the stuck one, which ends while the caller
  // is asked whether to wait on.
  int asked = 0;
  const bool ran = worker.Run([order] { order->push_back(2); }, [&] {
    if (++asked == 2) gate->Release();
    return true;
  }, 10);
  EXPECT_TRUE(ran);
  EXPECT_GE(asked, 2);
  ASSERT_EQ(order->size(), 2u);
  EXPECT_EQ((*order)[0], 1);
  EXPECT_EQ((*order)[1], 2);
  EXPECT_FALSE(worker.Busy());
}

TEST(IoWorker, AnAbandonedCallsResultIsDroppedNotLost) {
  // The call's own state (held by the call) gets its result; the caller
  // simply no longer looks at it.
  IoWorker worker;
  auto gate = std::make_shared<Gate>();
  auto result = std::make_shared<std::atomic<int>>(0);
  ASSERT_FALSE(worker.Run([gate, result] {
    gate->Call(gate)();
    *result = 42;
  }, [] { return false; }, 10));
  EXPECT_EQ(result->load(), 0);
  gate->Release();
  ASSERT_TRUE(WaitUntil([&] { return !worker.Busy(); }));
  EXPECT_EQ(result->load(), 42);
}

TEST(IoWorker, DestroyingTheWorkerDoesNotWaitForAStuckCall) {
  const int before = ThreadCount();
  auto gate = std::make_shared<Gate>();
  std::weak_ptr<Gate> held = gate;
  auto queuedRan = std::make_shared<std::atomic<bool>>(false);
  {
    IoWorker worker;
    ASSERT_FALSE(worker.Run(gate->Call(gate), [] { return false; }, 10));
    ASSERT_FALSE(worker.Run([queuedRan] { *queuedRan = true; }, [] { return false; }, 10));
    EXPECT_EQ(ThreadCount(), before + 1);
  }
  // The destructor returned while the call still runs.
  EXPECT_TRUE(WaitUntil([&] { return gate->started.load(); }));
  EXPECT_FALSE(gate->finished.load());
  EXPECT_FALSE(queuedRan->load());
  gate->Release();
  gate.reset();
  // The stuck call ends, the call queued behind it still runs, and the
  // thread then ends by itself.
  EXPECT_TRUE(WaitUntil([&] { return held.expired(); }));
  EXPECT_TRUE(WaitUntil([&] { return queuedRan->load(); }));
  EXPECT_TRUE(WaitUntil([&] { return ThreadCount() == before; }));
}

TEST(IoWorker, AnIdleWorkerEndsItsThreadWhenDestroyed) {
  const int before = ThreadCount();
  {
    IoWorker worker;
    EXPECT_EQ(ThreadCount(), before);  // started by the first call
    EXPECT_FALSE(worker.Busy());
    int ran = 0;
    EXPECT_TRUE(worker.Run([&ran] { ++ran; }, kKeepWaiting));
    EXPECT_EQ(ran, 1);
    EXPECT_EQ(ThreadCount(), before + 1);
  }
  // Joined: gone as soon as the destructor returned.
  EXPECT_EQ(ThreadCount(), before);
}

TEST(IoWorker, ManyShortCallsEachRunOnce) {
  // The caller's spin and the worker's spin and sleep, in every mix a busy
  // machine produces: no call is lost or run twice.
  IoWorker worker;
  std::atomic<int> sum{0};
  for (int i = 1; i <= 5000; ++i) {
    ASSERT_TRUE(worker.Run([&sum, i] { sum += i; }, kKeepWaiting, 1));
    if (i % 1000 == 0) SleepMs(2);  // let the worker fall asleep now and then
  }
  EXPECT_EQ(sum.load(), 5000 * 5001 / 2);
}

}  // namespace
