#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

namespace AudioEngine {

struct Voice;

// The streaming worker: opens each streamed voice's sound, then keeps its ring
// filled from the disk (or a decoder) ahead of the mixer, walking the loop. The
// control thread hands voices over with Add; the worker lets go of a voice (sets
// its stream's workerDone) once the sound has ended, failed or been released.
//
// With a device running, a thread does the work, waking every few ms while any
// stream is active. Offline, the caller runs ServiceAll before each render, so
// that tests see the same frames in the same order without timing.
class Streamer final
{
public:
    explicit Streamer(std::int32_t outputRate);
    ~Streamer();
    Streamer(const Streamer&) = delete;
    Streamer& operator=(const Streamer&) = delete;

    void StartThread();
    // Joins the thread; voices still held stay as they are (Finalize frees them).
    void StopThread();

    void Add(Voice* voice);
    // One pass over every stream: open what waits, fill every ring.
    void ServiceAll();

private:
    void Run();
    void TakeIncoming(std::vector<Voice*>& into);
    // False once the worker is done with the voice.
    bool Service(Voice& voice);

    const std::int32_t outputRate_;
    std::mutex mutex_; // guards incoming_ and quit_; never held during I/O
    std::condition_variable wake_;
    std::vector<Voice*> incoming_;
    bool quit_ = false;
    std::vector<Voice*> active_; // worker only
    std::thread thread_;
};

// Opens the stream's sound and fills in the voice's format block, buffers and
// resampler. Reports and returns false when the sound cannot be played.
bool OpenStreamVoice(Voice& voice, std::int32_t outputRate);

} // namespace AudioEngine
