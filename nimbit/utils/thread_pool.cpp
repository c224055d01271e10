#include "nimbit/utils/thread_pool.h"

#include <exception>

namespace nimbit {

namespace {

// How many times a waiting thread yields before it sleeps: a few tens of microseconds.
constexpr int spin_rounds = 64;

// The pool whose worker runs on this thread, so a nested run can be detected.
thread_local const thread_pool* current_pool = nullptr;

std::atomic<void* (*)()> scope_begin{nullptr};
std::atomic<void (*)(void*)> scope_end{nullptr};

} // namespace

void set_thread_scope(thread_scope scope) {
    scope_begin.store(scope.begin);
    scope_end.store(scope.end);
}

thread_scope_guard::thread_scope_guard() {
    void* (*begin)() = scope_begin.load();
    end = scope_end.load();
    if (begin != nullptr)
        state = begin();
}

thread_scope_guard::~thread_scope_guard() {
    if (end != nullptr)
        end(state);
}

namespace {
// Set once the process-wide pool exists, so that stopping it never makes it.
std::atomic<thread_pool*> made_instance{nullptr};
} // namespace

thread_pool& thread_pool::get_instance() {
    static thread_pool pool(std::thread::hardware_concurrency());
    made_instance.store(&pool, std::memory_order_release);
    return pool;
}

void thread_pool::stop_instance() {
    if (thread_pool* pool = made_instance.load(std::memory_order_acquire))
        pool->stop_workers();
}

thread_pool::thread_pool(uint32_t count) : worker_count(count == 0 ? 1 : count), status(worker_count, 0) {
    try {
        threads.reserve(worker_count);
        for (uint32_t i = 0; i < worker_count; ++i)
            threads.emplace_back([this, i] { worker_loop(i); });
    } catch (const std::exception&) {
        // The system refused a thread. Work with those that exist; with none, runs happen on the
        // caller. The workers read the count only once a run has been handed to them.
        std::lock_guard lock(mutex);
        if (!threads.empty())
            worker_count = static_cast<uint32_t>(threads.size());
    }
}

thread_pool::~thread_pool() {
    stop_workers();
}

void thread_pool::stop_workers() {
    std::lock_guard run(dispatch);
    {
        std::lock_guard lock(mutex);
        stop = true;
    }
    wake.notify_all();
    for (auto& t : threads)
        t.join();
    threads.clear();
}

thread_worker_data thread_pool::share(uint32_t count, uint32_t workers, uint32_t index) {
    thread_worker_data d{0, 0, index};
    uint32_t start = 0;
    uint32_t remaining = workers;
    for (uint32_t k = 0; k <= index && remaining > 0; ++k) {
        d.begin = start;
        d.end = start + (count - start) / remaining;
        start = d.end;
        --remaining;
    }
    return d;
}

void thread_pool::enqueue(uint32_t count, thread_job work) {
    if (!work)
        return;
    const auto on_caller = [&] {
        for (uint32_t i = 0; i < worker_count; ++i)
            work(share(count, worker_count, i));
    };
    if (current_pool == this)
        return on_caller();
    std::lock_guard run(dispatch);
    if (threads.empty())
        return on_caller();
    item_count = count;
    job = work;
    do_work();
    job = {};
}

void thread_pool::do_work() {
    done.reset(worker_count);
    finished.store(0, std::memory_order_relaxed);
    {
        std::lock_guard lock(mutex);
        for (auto& s : status)
            s = 1;
        generation.fetch_add(1, std::memory_order_release);
    }
    wake.notify_all();
    // Short runs end within a few microseconds; watching for that first saves the caller a sleep
    // and a wake-up. Long runs fall through to the latch.
    for (int spin = 0; spin < spin_rounds && finished.load(std::memory_order_acquire) < worker_count; ++spin)
        std::this_thread::yield();
    done.wait();
}

void thread_pool::worker_loop(uint32_t index) {
    current_pool = this;
    uint32_t seen = generation.load(std::memory_order_acquire);
    for (;;) {
        // Runs often come in bursts (one per row band, one per image): a worker that has just
        // finished watches briefly for the next one before it goes to sleep on the condition.
        for (int spin = 0; spin < spin_rounds && generation.load(std::memory_order_acquire) == seen; ++spin)
            std::this_thread::yield();
        {
            std::unique_lock lock(mutex);
            wake.wait(lock, [&] { return status[index] == 1 || stop; });
            if (stop)
                return;
            status[index] = 0;
            seen = generation.load(std::memory_order_relaxed);
        }
        {
            const thread_scope_guard scope;
            job(share(item_count, worker_count, index));
        }
        finished.fetch_add(1, std::memory_order_release);
        done.count_down();
    }
}

} // namespace nimbit
