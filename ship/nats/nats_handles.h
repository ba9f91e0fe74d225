#ifndef QZLOG_SHIP_NATS_NATS_HANDLES_H
#define QZLOG_SHIP_NATS_NATS_HANDLES_H

#include <nats/nats.h>

#include <memory>

namespace qzlog_ship {

/// Headers of JetStream.
inline constexpr const char* kNatsIdentity = "Nats-Msg-Id";
inline constexpr const char* kNatsExpectedStream = "Nats-Expected-Stream";

/// What libnats gives out, freed with its own function.
template <auto Free>
struct NatsFree {
  template <class Handle>
  void operator()(Handle* handle) const noexcept {
    Free(handle);
  }
};

using NatsOptionsPtr = std::unique_ptr<natsOptions, NatsFree<natsOptions_Destroy>>;
using NatsContextPtr = std::unique_ptr<jsCtx, NatsFree<jsCtx_Destroy>>;
using NatsMessagePtr = std::unique_ptr<natsMsg, NatsFree<natsMsg_Destroy>>;
using NatsSubscriptionPtr = std::unique_ptr<natsSubscription, NatsFree<natsSubscription_Destroy>>;
using NatsStreamInfoPtr = std::unique_ptr<jsStreamInfo, NatsFree<jsStreamInfo_Destroy>>;
using NatsConsumerInfoPtr = std::unique_ptr<jsConsumerInfo, NatsFree<jsConsumerInfo_Destroy>>;
using NatsMetaDataPtr = std::unique_ptr<jsMsgMetaData, NatsFree<jsMsgMetaData_Destroy>>;

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_NATS_NATS_HANDLES_H
