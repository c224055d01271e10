#include "gallery/capture_writer.h"

#include "gallery/capture_store.h"
#include "nimbit/filesystem/file_operations.h"
#include "nimbit/utils/thread_pool.h"

#include <exception>
#include <utility>

CaptureWriter::~CaptureWriter() {
    {
        std::lock_guard lock(mutex);
        stop = true;
    }
    wake.notify_one();
    if (worker.joinable()) {
        try {
            worker.join(); // the worker empties the queue before it looks at stop
        } catch (const std::exception&) {
            // Not joinable after all; nothing else can be done in a destructor.
        }
    }
}

bool CaptureWriter::Save(Job& job) {
    try {
        nimbit::make_dir(job.path.stem());
        job.path = CaptureStore::FreeCapturePath(job.path); // here, after the queued ones are written
        return job.image.save_image(job.path, nimbit::ui::image_format::png);
    } catch (const std::exception&) { // out of memory for the encoded frame
        return false;
    }
}

void CaptureWriter::Write(nimbit::ui::bitmap image, nimbit::file_path path) {
    std::unique_lock lock(mutex);
    if (!worker.joinable()) {
        try {
            worker = std::thread(&CaptureWriter::Run, this);
        } catch (const std::exception&) { // the system refused a thread: write here
            lock.unlock();
            Job job{std::move(image), std::move(path)};
            if (Save(job)) {
                std::lock_guard relock(mutex);
                written.push_back(std::move(job.path));
            }
            return;
        }
    }
    settled.wait(lock, [&] { return queue.size() < MaxQueued; });
    queue.push_back({std::move(image), std::move(path)});
    lock.unlock();
    wake.notify_one();
}

void CaptureWriter::Run() {
    std::unique_lock lock(mutex);
    for (;;) {
        wake.wait(lock, [&] { return stop || !queue.empty(); });
        if (queue.empty())
            return; // stopped, and nothing left to write
        Job job = std::move(queue.front());
        queue.pop_front();
        writing = true;
        lock.unlock();
        bool saved = false;
        {
            const nimbit::thread_scope_guard scope; // the platform's per-job set-up (an autorelease pool)
            saved = Save(job);
            job.image.unload(); // the frame's memory goes back before the next one is taken
        }
        lock.lock();
        if (saved)
            written.push_back(std::move(job.path));
        writing = false;
        settled.notify_all();
    }
}

void CaptureWriter::Flush() {
    std::unique_lock lock(mutex);
    settled.wait(lock, [&] { return queue.empty() && !writing; });
}

std::vector<nimbit::file_path> CaptureWriter::TakeWritten() {
    std::lock_guard lock(mutex);
    return std::exchange(written, {});
}

bool CaptureWriter::Busy() const {
    std::lock_guard lock(mutex);
    return writing || !queue.empty();
}
