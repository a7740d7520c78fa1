#include "WaveSoundSource.h"

#include <algorithm>

namespace {

thread_local WaveHeaderMessages* t_messages = nullptr;

void collect(const char* message)
{
    if (t_messages && message)
        t_messages->append(message);
}

// The reason a row shows: the first error of the reader, else its last word.
std::string reasonFrom(const std::vector<std::string>& messages)
{
    for (const std::string& m : messages) {
        if (!m.empty() && m[0] == 'E')
            return m;
    }
    return messages.empty() ? std::string("E2006110127 : Can not decode file header.")
                            : messages.back();
}

} // namespace

WaveHeaderMessages::WaveHeaderMessages()
    : m_outer(t_messages)
{
    t_messages = this;
}

WaveHeaderMessages::~WaveHeaderMessages()
{
    t_messages = m_outer;
}

void WaveHeaderMessages::append(const char* message)
{
    m_messages.emplace_back(message);
}

void RegisterWaveHeaderMessages()
{
    SetWaveHeaderErrorCallback(collect);
}

WaveSoundSource::~WaveSoundSource()
{
    close();
}

bool WaveSoundSource::adopt(WaveHeaderHandle* handle, const std::vector<std::string>& messages)
{
    if (!handle) {
        setError(reasonFrom(messages));
        return false;
    }
    m_handle = handle;
    setProperties(handle->samplingRate, handle->channels, handle->samples);
    return true;
}

bool WaveSoundSource::open(const char* localPath)
{
    close();
    if (GetWaveHeaderErrorCallback() == nullptr)
        RegisterWaveHeaderMessages();
    WaveHeaderMessages scope;
    return adopt(OpenWaveHeader(localPath), scope.messages());
}

bool WaveSoundSource::openMemory(const void* data, std::size_t size)
{
    close();
    if (GetWaveHeaderErrorCallback() == nullptr)
        RegisterWaveHeaderMessages();
    WaveHeaderMessages scope;
    return adopt(OpenWaveHeaderFromMemory(data, size), scope.messages());
}

void WaveSoundSource::close()
{
    CloseWaveHeader(m_handle);
    m_handle = nullptr;
}

std::int64_t WaveSoundSource::readLeftJustified(std::int32_t* interleaved, std::int64_t frames)
{
    if (!m_handle || frames <= 0 || m_handle->channels <= 0)
        return 0;
    const std::int64_t values = frames * m_handle->channels;
    const std::int64_t got = DecodeSamples(m_handle, interleaved, values);
    if (got < 0)
        return 0;
    if (got < values && m_handle->position < m_handle->dataStart + m_handle->dataBytes)
        setError("E2006110154 : Can not read sample data.");
    return got / m_handle->channels;
}

std::int64_t WaveSoundSource::read(float* interleaved, std::int64_t frames)
{
    if (!m_handle || frames <= 0)
        return 0;
    const auto values = static_cast<std::size_t>(frames) * std::size_t(m_handle->channels);
    if (m_scratch.size() < values)
        m_scratch.resize(values);
    const std::int64_t got = readLeftJustified(m_scratch.data(), frames);
    const std::size_t n = static_cast<std::size_t>(got) * std::size_t(m_handle->channels);
    // Left-justified 32-bit values to +-1.0: x 2^-15 x 2^-16.
    for (std::size_t i = 0; i < n; ++i)
        interleaved[i] = static_cast<float>(m_scratch[i]) * 3.0517578e-5f * 1.5258789e-5f;
    return got;
}

bool WaveSoundSource::seek(std::int64_t frame)
{
    return m_handle && SeekSample(m_handle, std::max<std::int64_t>(frame, 0), 0) >= 0;
}

bool WaveSoundSource::skip(std::int64_t frames)
{
    return m_handle && SeekSample(m_handle, frames, 1) >= 0;
}
