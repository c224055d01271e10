#pragma once

#include "nimbit/filesystem/file_path.h"
#include "nimbit/ui/bitmap.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

// Writes folder captures on a thread of its own, so that the host's main thread only converts the
// frame: encoding and writing a large frame takes several times as long. Captures are written in the
// order given, each as a whole PNG or not at all; a failed write is dropped silently. The files
// written are collected for the main thread to pick up (TakeWritten), which then tells the gallery:
// the writer itself never calls into the UI.
class CaptureWriter {
public:
    CaptureWriter() = default;
    // Finishes every queued capture before it returns: a capture is never lost.
    ~CaptureWriter();
    CaptureWriter(const CaptureWriter&) = delete;
    CaptureWriter& operator=(const CaptureWriter&) = delete;

    // Queues image to be written as a PNG at path, creating path's folder when missing. Returns at
    // once unless MaxQueued captures are already waiting (each is a whole frame in memory); without
    // a thread to be had, writes before returning.
    void Write(nimbit::ui::bitmap image, nimbit::file_path path);
    // Returns when every capture queued so far is written (or has failed).
    void Flush();
    // The captures written completely since the last call, oldest first.
    std::vector<nimbit::file_path> TakeWritten();
    // Whether a capture is queued or being written.
    bool Busy() const;

    static constexpr size_t MaxQueued = 3;

private:
    struct Job {
        nimbit::ui::bitmap image;
        nimbit::file_path path;
    };
    static bool Save(Job& job);
    void Run();

    mutable std::mutex mutex;
    std::condition_variable wake;    // the worker: a job is queued or the writer stops
    std::condition_variable settled; // the callers: a job has finished
    std::deque<Job> queue;
    bool writing = false; // the worker holds a job taken off the queue
    bool stop = false;
    std::vector<nimbit::file_path> written;
    std::thread worker; // started with the first capture
};
