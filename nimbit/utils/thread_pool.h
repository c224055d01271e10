#pragma once

#include "nimbit/utils/latch.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <type_traits>
#include <vector>

namespace nimbit {

// What one worker's call of a job covers: items [begin, end), run on worker thread_index.
struct thread_worker_data {
    uint32_t begin = 0;
    uint32_t end = 0;
    uint32_t thread_index = 0;
};

// A non-owning reference to a callable taking a thread_worker_data. The pool blocks until a run is
// over, so the callable outlives every call, and dispatch needs no allocation.
class thread_job {
public:
    template <typename F>
    requires(!std::is_same_v<std::remove_cvref_t<F>, thread_job>) thread_job(F&& f)
        : object(const_cast<void*>(static_cast<const void*>(std::addressof(f)))),
          call([](void* o, const thread_worker_data& d) {
              (*static_cast<std::remove_reference_t<F>*>(o))(d);
          }) {}
    thread_job() = default;
    void operator()(const thread_worker_data& d) const { call(object, d); }
    explicit operator bool() const { return call != nullptr; }

private:
    void* object = nullptr;
    void (*call)(void*, const thread_worker_data&) = nullptr;
};

// Set-up and tear-down around each job a worker runs, for a platform whose objects need per-thread
// care: the AppKit backend opens an autorelease pool, so that objects a job makes are freed when it
// ends. begin's result is handed to end. Installed once, before pools run jobs; both null: none.
struct thread_scope {
    void* (*begin)() = nullptr;
    void (*end)(void*) = nullptr;
};
void set_thread_scope(thread_scope scope);

// The installed scope, open for the guard's lifetime: for threads of one's own (a background
// writer) that do the pool's kind of work.
class thread_scope_guard {
public:
    thread_scope_guard();
    ~thread_scope_guard();
    thread_scope_guard(const thread_scope_guard&) = delete;
    thread_scope_guard& operator=(const thread_scope_guard&) = delete;

private:
    void (*end)(void*) = nullptr;
    void* state = nullptr;
};

// A fixed set of worker threads running one parallel loop at a time. Every worker takes a
// contiguous share of the items (the last one the largest) and the caller blocks until all shares
// are done. The job is called for every worker, also with an empty share, inside the thread scope.
class thread_pool {
public:
    // The process-wide pool, one worker per hardware thread, made on first use.
    static thread_pool& get_instance();
    // Ends the process-wide pool's workers if it was made. For a module about to be unloaded: its
    // static pool would otherwise join them in its destructor, which Windows runs under the loader
    // lock that the exiting workers wait for.
    static void stop_instance();

    // A pool of its own; a count of 0 (an unknown hardware concurrency) makes one worker. When the
    // system refuses threads the pool makes do with fewer, down to running jobs on the caller.
    explicit thread_pool(uint32_t worker_count);
    ~thread_pool();
    thread_pool(const thread_pool&) = delete;
    thread_pool& operator=(const thread_pool&) = delete;

    // Runs job over count items on every worker and returns when all are done. Called from inside a
    // job of this pool, the shares run one after another on the calling worker instead of
    // deadlocking. Runs from different threads are serialised.
    void enqueue(uint32_t count, thread_job job);
    // Ends and joins the workers once the run in progress is done; later runs happen on the caller.
    void stop_workers();
    uint32_t get_worker_count() const { return worker_count; }

    // The share of worker index when count items are split over workers: earlier workers get the
    // rounded-down shares, the last one the remainder.
    static thread_worker_data share(uint32_t count, uint32_t workers, uint32_t index);

private:
    void do_work();
    void worker_loop(uint32_t index);

    uint32_t worker_count = 0;
    std::vector<std::thread> threads;
    std::vector<uint8_t> status; // 1: work is waiting for the worker
    bool stop = false;
    std::mutex mutex;
    std::condition_variable wake;
    std::atomic<uint32_t> generation{0}; // counts runs, so workers can watch for the next one
    std::atomic<uint32_t> finished{0};   // workers done with the current run

    std::mutex dispatch; // one run at a time
    thread_job job;
    uint32_t item_count = 0;
    latch done;
};

} // namespace nimbit
