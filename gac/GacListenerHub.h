#pragma once

#include <memory>
#include <shared_mutex>
#include <string>
#include <vector>

namespace Vexmw {

class VexGacListener;
class VexGacMessageBase;

// The listeners of one client. Calls reach them from the caller's thread, the
// connection thread, attempt threads and the SDK's callback threads. Once the
// client is gone, detach() waits for the calls under way (listeners only hand
// things on, so that is short) and no call follows: a late SDK callback or an
// abandoned attempt never reaches a destroyed listener.
class GacListenerHub final
{
public:
    GacListenerHub() = default;
    GacListenerHub(const GacListenerHub&) = delete;
    GacListenerHub& operator=(const GacListenerHub&) = delete;

    void add(VexGacListener* listener);
    void remove(VexGacListener* listener);
    void detach();

    void log(const std::string& line);
    void message(const std::shared_ptr<const VexGacMessageBase>& message);
    void serverDisconnected();
    void transferProgress(double fraction);

private:
    template<typename Call>
    void each(const Call& call);

    std::shared_mutex m_mutex;
    std::vector<VexGacListener*> m_listeners;
    bool m_detached = false;
};

} // namespace Vexmw
