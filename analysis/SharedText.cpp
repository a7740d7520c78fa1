#include "SharedText.h"

#include <mutex>
#include <unordered_set>

namespace {

struct Pool
{
    std::mutex mutex;
    // Nodes never move, so the addresses handed out stay valid.
    std::unordered_set<std::string> texts;
};

Pool& pool()
{
    // Never destroyed: records in static storage may outlive any destructor order.
    static Pool* instance = new Pool;
    return *instance;
}

} // namespace

SharedText::SharedText(std::string_view text)
{
    if (text.empty())
        return;
    Pool& p = pool();
    std::string key(text);
    const std::lock_guard<std::mutex> lock(p.mutex);
    auto it = p.texts.find(key);
    if (it == p.texts.end())
        it = p.texts.insert(std::move(key)).first;
    m_text = &*it;
}

const std::string& SharedText::str() const
{
    static const std::string none;
    return m_text ? *m_text : none;
}
