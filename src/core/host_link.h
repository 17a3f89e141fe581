#pragma once
// The binding to the host program's automation interface: one HostObject per
// window (its own reference, subscribed to the host's events), the host's
// commands and queries, and the busy test used before unattended announcements.
#include <cstdint>
#include <memory>
#include <string>

namespace mv {

struct StationInfo {
    std::string callsign;
};

// Host events a window can handle; a window overrides only the ones it handles.
class HostEvents {
public:
    virtual ~HostEvents() = default;
    virtual void onDTMFString(const std::string& /*digits*/) {}
    virtual void onRX(bool /*receiving*/) {}
    virtual void onCarrierDetect(bool /*carrier*/) {}
    virtual void onConnected(const std::string& /*call*/, const std::string& /*name*/, const std::string& /*address*/) {}
    virtual void onDisconnected(const std::string& /*call*/) {}
    virtual void onChatTextReceived(const std::string& /*text*/) {}
    virtual void onClosing() {}
};

// A window's reference to the host. Every call may throw HostError.
class HostObject {
public:
    virtual ~HostObject() = default;
    virtual void connect(const std::string& call, bool flag) = 0;
    virtual void disconnect(const std::string& call) = 0;
    virtual void disconnectAll() = 0;
    virtual void setPTT(bool on) = 0;
    virtual bool isBusy() = 0;
    virtual bool isReceiving() = 0;
    virtual bool isTransmitting() = 0;
    virtual bool isCarrierDetected() = 0;
    virtual void sendCW(int32_t option, const std::string& text) = 0;
    virtual bool isConnectedTo(const std::string& call) = 0;
    virtual StationInfo stationInfo() = 0;
    virtual void transmitDTMF(const std::string& digit) = 0;
    virtual void setRTS(bool on) = 0;
    virtual void setDTR(bool on) = 0;
    virtual void sendChatText(const std::string& text) = 0;
    virtual void executeDTMF(const std::string& digits) = 0;
    virtual void performAction(int32_t action) = 0;
};

// The host program. Creating an object subscribes `events` (may be null for a
// window with no handlers) until the object is destroyed.
class HostLink {
public:
    virtual ~HostLink() = default;
    virtual std::unique_ptr<HostObject> createObject(const std::string& windowName, HostEvents* events) = 0;
};

// The busy test: IsBusy, IsReceiving and IsCarrierDetected, all three read
// every time, in that order. True means the channel is in use.
bool channelBusy(HostObject& host);

// A connect/disconnect button: disconnects `station` when the host reports
// it connected, connects it otherwise. Asked of the host every time, since
// stations come and go on their own.
void toggleConnection(HostObject& host, const std::string& station);

}  // namespace mv
