#include "GacListenerHub.h"

#include "VexGacListener.h"

#include <algorithm>
#include <mutex>

namespace Vexmw {

void GacListenerHub::add(VexGacListener* listener)
{
    std::unique_lock<std::shared_mutex> lock(m_mutex);
    if (listener && !m_detached &&
        std::find(m_listeners.begin(), m_listeners.end(), listener) == m_listeners.end())
        m_listeners.push_back(listener);
}

void GacListenerHub::remove(VexGacListener* listener)
{
    std::unique_lock<std::shared_mutex> lock(m_mutex);
    m_listeners.erase(std::remove(m_listeners.begin(), m_listeners.end(), listener),
                      m_listeners.end());
}

void GacListenerHub::detach()
{
    std::unique_lock<std::shared_mutex> lock(m_mutex);
    m_detached = true;
    m_listeners.clear();
}

template<typename Call>
void GacListenerHub::each(const Call& call)
{
    std::shared_lock<std::shared_mutex> lock(m_mutex);
    for (VexGacListener* l : m_listeners)
        call(l);
}

void GacListenerHub::log(const std::string& line)
{
    each([&](VexGacListener* l) { l->onGacLog(line); });
}

void GacListenerHub::message(const std::shared_ptr<const VexGacMessageBase>& message)
{
    each([&](VexGacListener* l) { l->onGacMessage(message); });
}

void GacListenerHub::serverDisconnected()
{
    each([](VexGacListener* l) { l->onGacServerDisconnected(); });
}

void GacListenerHub::transferProgress(double fraction)
{
    each([&](VexGacListener* l) { l->onGacTransferProgress(fraction); });
}

} // namespace Vexmw
