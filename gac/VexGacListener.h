#pragma once

#include <memory>
#include <string>

namespace Vexmw {

class VexGacMessageBase;

// Receives what the connection reports. Calls arrive on the caller's thread,
// on the connection thread or on the SDK's callback threads; an implementation
// that touches a GUI must hand them on.
class VexGacListener
{
public:
    virtual ~VexGacListener() = default;

    virtual void onGacLog(const std::string& line) = 0;
    // Asset exported, asset transferred and segment transferred notifications.
    virtual void onGacMessage(const std::shared_ptr<const VexGacMessageBase>& message) = 0;
    virtual void onGacServerDisconnected() {}
    virtual void onGacTransferProgress(double /*fraction*/) {}

protected:
    VexGacListener() = default;
    VexGacListener(const VexGacListener&) = default;
    VexGacListener& operator=(const VexGacListener&) = default;
};

} // namespace Vexmw
