#include "TerminationSignals.h"

#include <QSocketNotifier>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>
#endif

#ifdef Q_OS_UNIX
namespace {

constexpr int kSignals[] = {SIGTERM, SIGINT, SIGHUP};
// [0] is written by the handler, [1] read on the owner's thread.
int g_pipe[2] = {-1, -1};
volatile sig_atomic_t g_pending[65] = {};
struct sigaction g_previous[std::size(kSignals)];

// Only async-signal-safe calls: write, signal, raise.
void OnSignal(int number)
{
    if (number > 0 && number < 65 && g_pending[number]) {
        std::signal(number, SIG_DFL);
        std::raise(number);
        return;
    }
    if (number > 0 && number < 65)
        g_pending[number] = 1;
    const unsigned char byte = static_cast<unsigned char>(number);
    const ssize_t written = ::write(g_pipe[0], &byte, 1);
    (void)written;
}

} // namespace
#endif

TerminationSignals::TerminationSignals(QObject* parent)
    : QObject(parent)
{
#ifdef Q_OS_UNIX
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, g_pipe) != 0)
        return;
    notifier = new QSocketNotifier(g_pipe[1], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &TerminationSignals::readSignal);
    struct sigaction action = {};
    action.sa_handler = OnSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (size_t i = 0; i < std::size(kSignals); ++i) {
        g_pending[kSignals[i]] = 0;
        ::sigaction(kSignals[i], &action, &g_previous[i]);
    }
#endif
}

TerminationSignals::~TerminationSignals()
{
#ifdef Q_OS_UNIX
    if (!notifier)
        return;
    for (size_t i = 0; i < std::size(kSignals); ++i)
        ::sigaction(kSignals[i], &g_previous[i], nullptr);
    delete notifier;
    ::close(g_pipe[0]);
    ::close(g_pipe[1]);
    g_pipe[0] = g_pipe[1] = -1;
#endif
}

void TerminationSignals::readSignal()
{
#ifdef Q_OS_UNIX
    unsigned char byte = 0;
    if (::read(g_pipe[1], &byte, 1) == 1)
        emit SigTerminationRequested(byte);
#endif
}
