#include "ConnectingThread.h"

namespace Vexmw {

namespace {

// Only a safeguard: the thread answers a stop as soon as it takes it.
constexpr std::chrono::milliseconds kStopReplyLimit(90);

} // namespace

ConnectingThread::ConnectingThread(std::shared_ptr<GacLink> link, int retryIntervalMs)
    : m_link(std::move(link))
    , m_retryInterval(retryIntervalMs)
    , m_thread([this] { run(); })
{}

ConnectingThread::~ConnectingThread()
{
    m_link->post(GacEvent(GacEvent::Quit));
    m_thread.join();
}

void ConnectingThread::begin()
{
    m_link->post(GacEvent(GacEvent::Start));
}

bool ConnectingThread::stop()
{
    GacEvent event(GacEvent::Stop);
    event.reply = std::make_shared<std::promise<bool>>();
    std::future<bool> stopped = event.reply->get_future();
    m_link->post(std::move(event));
    if (stopped.wait_for(kStopReplyLimit) == std::future_status::ready)
        return stopped.get();
    return m_link->state() != LinkState::Connected;
}

void ConnectingThread::run()
{
    for (;;) {
        const std::optional<GacEvent> event = m_link->take(m_retryAt);
        if (!event) {
            m_retryAt.reset();
            if (m_state == LinkState::Waiting)
                launchAttempt();
            continue;
        }
        switch (event->kind) {
        case GacEvent::Quit:
            abandonAttempts();
            m_link->closeEvents();
            return;
        case GacEvent::Start:
            onStart();
            break;
        case GacEvent::Stop:
            onStop(*event);
            break;
        case GacEvent::ServerDisconnected:
            onServerDisconnected();
            break;
        case GacEvent::AttemptDone:
        case GacEvent::ResetDone:
            onWorkerDone(*event);
            break;
        }
    }
}

void ConnectingThread::setState(LinkState state)
{
    m_state = state;
    m_link->publishState(state);
}

void ConnectingThread::abandonAttempts()
{
    ++m_generation;
    m_link->setCurrentGeneration(m_generation);
    m_retryAt.reset();
}

void ConnectingThread::onStart()
{
    if (m_state != LinkState::NotConnected)
        return;
    setState(LinkState::Waiting);
    launchAttempt();
}

void ConnectingThread::onStop(const GacEvent& event)
{
    const bool stopped = m_state != LinkState::Connected;
    if (m_state == LinkState::Waiting) {
        setState(LinkState::NotConnected);
        abandonAttempts();
    }
    // Answered before anything is logged: the caller waits for it.
    event.reply->set_value(stopped);
}

void ConnectingThread::onServerDisconnected()
{
    if (m_state == LinkState::Connected) {
        setState(LinkState::Waiting);
        m_link->log("[API] Vex GAC startConnectionThread()");
        launchAttempt();
    } else if (m_state == LinkState::Waiting && m_workerBusy) {
        // It may concern the very connection the attempt under way is making.
        m_disconnectDuringAttempt = true;
    }
}

void ConnectingThread::onWorkerDone(const GacEvent& event)
{
    m_workerBusy = false;
    if (event.kind == GacEvent::AttemptDone && event.generation != m_generation &&
        event.outcome == AttemptOutcome::Connected) {
        // Abandoned, but the SDK connected after all.
        m_workerBusy = true;
        std::thread([link = m_link] {
            link->reset();
            link->post(GacEvent(GacEvent::ResetDone));
        }).detach();
        return;
    }
    if (event.kind == GacEvent::ResetDone || event.generation != m_generation) {
        if (m_state == LinkState::Waiting)
            launchAttempt();
        return;
    }
    switch (event.outcome) {
    case AttemptOutcome::Connected:
        if (m_disconnectDuringAttempt) {
            m_link->log("[Info] The server went away while connecting; trying again.");
            launchAttempt();
        } else {
            setState(LinkState::Connected);
        }
        break;
    case AttemptOutcome::Failed:
        m_retryAt = std::chrono::steady_clock::now() + m_retryInterval;
        break;
    case AttemptOutcome::Impossible:
        setState(LinkState::NotConnected);
        abandonAttempts();
        break;
    }
}

void ConnectingThread::launchAttempt()
{
    m_retryAt.reset();
    // An abandoned attempt still held by the SDK comes back first; the SDK
    // gets one attempt at a time.
    if (m_workerBusy)
        return;
    m_workerBusy = true;
    m_disconnectDuringAttempt = false;
    std::thread([link = m_link, generation = m_generation] {
        const AttemptOutcome outcome = link->attempt(generation);
        GacEvent done(GacEvent::AttemptDone);
        done.generation = generation;
        done.outcome = outcome;
        link->post(std::move(done));
    }).detach();
}

} // namespace Vexmw
