#include "AnalysisJournal.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sstream>
#include <sys/file.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kLinesBeforeCompaction = 20000;

// Paths are the rest of the line; only the bytes that would break a line are escaped.
std::string escape(const std::string& path)
{
    std::string out;
    out.reserve(path.size());
    for (const char c : path) {
        if (c == '%')
            out += "%25";
        else if (c == '\n')
            out += "%0A";
        else if (c == '\r')
            out += "%0D";
        else
            out += c;
    }
    return out;
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

std::string unescape(const std::string& text)
{
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = i + 2 < text.size() && text[i] == '%' ? hexDigit(text[i + 1]) : -1;
        const int low = high >= 0 ? hexDigit(text[i + 2]) : -1;
        if (low >= 0) {
            out += static_cast<char>(high * 16 + low);
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

bool processAlive(long pid)
{
    if (pid <= 0 || pid == static_cast<long>(::getpid()))
        return false;
    return ::kill(static_cast<pid_t>(pid), 0) == 0 || errno == EPERM;
}

class FileLock final
{
public:
    explicit FileLock(int fd)
        : m_fd(fd)
    {
        while (::flock(m_fd, LOCK_EX) != 0 && errno == EINTR) {
        }
    }
    ~FileLock() { ::flock(m_fd, LOCK_UN); }
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    int m_fd;
};

bool writeAll(int fd, const std::string& text)
{
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t n = ::write(fd, text.data() + done, text.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        done += std::size_t(n);
    }
    return true;
}

} // namespace

AnalysisJournal::~AnalysisJournal()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

QString AnalysisJournal::DefaultPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
           QStringLiteral("/Orvane Works/Tesk/analysis-journal");
}

bool AnalysisJournal::open(const QString& path)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
    QDir().mkpath(QFileInfo(path).absolutePath());
    const int fd =
        ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (fd < 0)
        return false;
    m_fd = fd;
    const FileLock lock(m_fd);
    rebuildLocked(true);
    return true;
}

void AnalysisJournal::rebuildLocked(bool atOpen)
{
    std::string text;
    {
        char buffer[65536];
        off_t at = 0;
        for (;;) {
            const ssize_t n = ::pread(m_fd, buffer, sizeof buffer, at);
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0)
                break;
            text.append(buffer, std::size_t(n));
            at += n;
        }
    }
    struct Begun
    {
        long pid;
        std::uint64_t token;
        std::string line;
        std::string path;
        Stamp stamp;
    };
    std::vector<Begun> begun;
    std::unordered_map<std::string, Stamp> failed;
    std::unordered_map<std::string, Stamp> suspects;
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream fields(line);
        char kind = 0;
        fields >> kind;
        if (kind == 'F' || kind == 'S') {
            Stamp stamp;
            fields >> stamp.size >> stamp.modifiedNs;
            fields.get();
            std::string path;
            std::getline(fields, path);
            if (fields || fields.eof())
                (kind == 'F' ? failed : suspects)[unescape(path)] = stamp;
        } else if (kind == 'R') {
            fields.get();
            std::string path;
            std::getline(fields, path);
            failed.erase(unescape(path));
            suspects.erase(unescape(path));
        } else if (kind == 'B') {
            Begun b;
            fields >> b.pid >> b.token >> b.stamp.size >> b.stamp.modifiedNs;
            fields.get();
            std::getline(fields, b.path);
            b.path = unescape(b.path);
            b.line = line;
            begun.push_back(std::move(b));
        } else if (kind == 'E') {
            long pid = 0;
            std::uint64_t token = 0;
            fields >> pid >> token;
            for (auto it = begun.begin(); it != begun.end(); ++it) {
                if (it->pid == pid && it->token == token) {
                    begun.erase(it);
                    break;
                }
            }
        }
    }
    std::string kept;
    const long self = static_cast<long>(::getpid());
    std::unordered_map<long, int> inFlightAtDeath;
    for (const Begun& b : begun) {
        const bool mine = b.pid == self && !atOpen && m_running.count(b.token) != 0;
        if (!mine && !processAlive(b.pid))
            ++inFlightAtDeath[b.pid];
    }
    for (const Begun& b : begun) {
        const auto dead = inFlightAtDeath.find(b.pid);
        if (dead == inFlightAtDeath.end() || (b.pid == self && !atOpen && m_running.count(b.token)))
            kept += b.line + '\n';
        else if (dead->second == 1)
            failed[b.path] = b.stamp;
        else if (failed.count(b.path) == 0)
            suspects[b.path] = b.stamp;
    }
    std::string compacted;
    for (const auto& [path, stamp] : failed)
        compacted += "F " + std::to_string(stamp.size) + ' ' + std::to_string(stamp.modifiedNs) +
                     ' ' + escape(path) + '\n';
    for (const auto& [path, stamp] : suspects)
        compacted += "S " + std::to_string(stamp.size) + ' ' + std::to_string(stamp.modifiedNs) +
                     ' ' + escape(path) + '\n';
    compacted += kept;
    if (::ftruncate(m_fd, 0) == 0)
        writeAll(m_fd, compacted);
    m_failed = std::move(failed);
    m_suspects = std::move(suspects);
    m_linesSinceRebuild = 0;
}

void AnalysisJournal::appendLocked(const std::string& line)
{
    const FileLock lock(m_fd);
    if (++m_linesSinceRebuild > kLinesBeforeCompaction)
        rebuildLocked(false);
    writeAll(m_fd, line);
}

bool AnalysisJournal::isFailed(const std::string& path, std::int64_t size, std::int64_t modifiedNs)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    const auto it = m_failed.find(path);
    if (it == m_failed.end())
        return false;
    if (it->second.size == size && it->second.modifiedNs == modifiedNs)
        return true;
    m_failed.erase(it);
    if (m_fd >= 0)
        appendLocked("R " + escape(path) + '\n');
    return false;
}

bool AnalysisJournal::isSuspect(const std::string& path, std::int64_t size, std::int64_t modifiedNs)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    const auto it = m_suspects.find(path);
    if (it == m_suspects.end())
        return false;
    if (it->second.size == size && it->second.modifiedNs == modifiedNs)
        return true;
    m_suspects.erase(it);
    if (m_fd >= 0)
        appendLocked("R " + escape(path) + '\n');
    return false;
}

void AnalysisJournal::clear(const std::string& path)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (m_suspects.erase(path) != 0 && m_fd >= 0)
        appendLocked("R " + escape(path) + '\n');
}

AnalysisJournal::Turn::Turn(AnalysisJournal& journal, bool alone)
    : m_journal(journal)
    , m_alone(alone)
{
    std::unique_lock<std::mutex> lock(journal.m_turnMutex);
    if (!alone) {
        // One waiting to go alone goes first, or it might wait for ever.
        journal.m_turnChanged.wait(
            lock, [&journal] { return !journal.m_aloneRunning && journal.m_aloneWaiting == 0; });
        ++journal.m_sharedTurns;
        return;
    }
    ++journal.m_aloneWaiting;
    journal.m_turnChanged.wait(
        lock, [&journal] { return !journal.m_aloneRunning && journal.m_sharedTurns == 0; });
    --journal.m_aloneWaiting;
    journal.m_aloneRunning = true;
}

AnalysisJournal::Turn::~Turn()
{
    {
        const std::lock_guard<std::mutex> lock(m_journal.m_turnMutex);
        if (m_alone)
            m_journal.m_aloneRunning = false;
        else
            --m_journal.m_sharedTurns;
    }
    m_journal.m_turnChanged.notify_all();
}

std::uint64_t AnalysisJournal::begin(const std::string& path, std::int64_t size,
                                     std::int64_t modifiedNs)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    const std::uint64_t token = m_nextToken++;
    if (m_fd < 0)
        return token;
    m_running.insert(token);
    appendLocked("B " + std::to_string(::getpid()) + ' ' + std::to_string(token) + ' ' +
                 std::to_string(size) + ' ' + std::to_string(modifiedNs) + ' ' + escape(path) +
                 '\n');
    return token;
}

void AnalysisJournal::end(std::uint64_t token)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (m_fd < 0 || m_running.erase(token) == 0)
        return;
    appendLocked("E " + std::to_string(::getpid()) + ' ' + std::to_string(token) + '\n');
}
