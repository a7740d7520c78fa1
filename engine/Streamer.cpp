#include "Streamer.h"

#include "Stream.h"
#include "StreamSource.h"
#include "Voice.h"

#include <algorithm>
#include <chrono>

namespace AudioEngine {

namespace {

// The first fill is short so that the sound starts at once; the ring fills up
// right after.
constexpr std::size_t kFirstFillFrames = 2048;
constexpr auto kRefillPeriod = std::chrono::milliseconds(4);

// Fills the ring as far as there is room (at most `budget` frames), following
// the timeline: on to the loop end and back to its start, or to the linear end.
void Fill(Stream& s, std::size_t budget)
{
    const std::uint64_t capacity = s.capacity;
    while (budget > 0 && !s.end.load(std::memory_order_relaxed)) {
        const std::uint64_t written = s.written.load(std::memory_order_relaxed);
        const std::uint64_t room = capacity - (written - s.read.load(std::memory_order_acquire));
        if (room == 0)
            return;
        const std::size_t offset = static_cast<std::size_t>(written) & (s.capacity - 1);
        std::int64_t piece =
            static_cast<std::int64_t>(std::min<std::uint64_t>({room, capacity - offset, budget}));
        const std::int64_t boundary = s.looping ? s.loopEnd : s.stopAt;
        if (boundary >= 0)
            piece = std::min(piece, boundary - s.position);
        if (piece <= 0) {
            if (s.looping && s.source->Seek(s.loopStart)) {
                s.position = s.loopStart;
                continue;
            }
            s.end.store(true, std::memory_order_release);
            return;
        }
        const long n = s.source->Read(s.ring + offset * static_cast<std::size_t>(s.channels),
                                      static_cast<long>(piece));
        if (n <= 0) {
            s.end.store(true, std::memory_order_release);
            return;
        }
        s.position += n;
        budget -= static_cast<std::size_t>(n);
        s.written.store(written + static_cast<std::uint64_t>(n), std::memory_order_release);
    }
}

} // namespace

Streamer::Streamer(std::int32_t outputRate)
    : outputRate_(outputRate)
{}

Streamer::~Streamer()
{
    StopThread();
}

void Streamer::StartThread()
{
    if (thread_.joinable())
        return;
    {
        std::lock_guard lock(mutex_);
        quit_ = false;
    }
    thread_ = std::thread(&Streamer::Run, this);
}

void Streamer::StopThread()
{
    {
        std::lock_guard lock(mutex_);
        quit_ = true;
    }
    wake_.notify_all();
    if (thread_.joinable())
        thread_.join();
}

void Streamer::Add(Voice* voice)
{
    {
        std::lock_guard lock(mutex_);
        incoming_.push_back(voice);
    }
    wake_.notify_one();
}

void Streamer::TakeIncoming(std::vector<Voice*>& into)
{
    std::lock_guard lock(mutex_);
    into.insert(into.end(), incoming_.begin(), incoming_.end());
    incoming_.clear();
}

bool Streamer::Service(Voice& voice)
{
    Stream& s = *voice.stream;
    if (voice.released.load(std::memory_order_acquire)) {
        s.workerDone.store(true, std::memory_order_release);
        return false;
    }
    if (static_cast<StreamPhase>(s.phase.load(std::memory_order_relaxed)) == StreamPhase::Opening) {
        if (!OpenStreamVoice(voice, outputRate_)) {
            s.phase.store(static_cast<std::int32_t>(StreamPhase::Failed),
                          std::memory_order_release);
            s.workerDone.store(true, std::memory_order_release);
            return false;
        }
        Fill(s, kFirstFillFrames);
        s.phase.store(static_cast<std::int32_t>(StreamPhase::Ready), std::memory_order_release);
    }
    Fill(s, s.capacity);
    if (s.end.load(std::memory_order_relaxed)) {
        // The mixer still plays out the ring; the worker has nothing more to do.
        s.workerDone.store(true, std::memory_order_release);
        return false;
    }
    return true;
}

void Streamer::ServiceAll()
{
    TakeIncoming(active_);
    active_.erase(
        std::remove_if(active_.begin(), active_.end(), [this](Voice* v) { return !Service(*v); }),
        active_.end());
}

void Streamer::Run()
{
    for (;;) {
        ServiceAll();
        std::unique_lock lock(mutex_);
        if (quit_)
            return;
        if (!incoming_.empty())
            continue;
        if (active_.empty())
            wake_.wait(lock, [this] { return quit_ || !incoming_.empty(); });
        else
            wake_.wait_for(lock, kRefillPeriod, [this] { return quit_ || !incoming_.empty(); });
        if (quit_)
            return;
    }
}

} // namespace AudioEngine
