#include "core/host_link.h"

namespace mv {

bool channelBusy(HostObject& host) {
    const bool busy = host.isBusy();
    const bool receiving = host.isReceiving();
    const bool carrier = host.isCarrierDetected();
    return busy || receiving || carrier;
}

}  // namespace mv
