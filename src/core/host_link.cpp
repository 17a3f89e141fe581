#include "core/host_link.h"

namespace mv {

bool channelBusy(HostObject& host) {
    const bool busy = host.isBusy();
    const bool receiving = host.isReceiving();
    const bool carrier = host.isCarrierDetected();
    return busy || receiving || carrier;
}

void toggleConnection(HostObject& host, const std::string& station) {
    if (host.isConnectedTo(station))
        host.disconnect(station);
    else
        host.connect(station, true);
}

}  // namespace mv
