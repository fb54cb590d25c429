#include "platform/airplay_receiver.h"

namespace tandrel {

std::string_view name(ReceiverStatus::State state) {
    switch (state) {
        case ReceiverStatus::State::off:
            return "off";
        case ReceiverStatus::State::missing:
            return "missing";
        case ReceiverStatus::State::starting:
            return "starting";
        case ReceiverStatus::State::waiting:
            return "waiting";
        case ReceiverStatus::State::mirroring:
            return "mirroring";
        case ReceiverStatus::State::stalled:
            return "stalled";
        case ReceiverStatus::State::failed:
            return "failed";
    }
    return "off";
}

}  // namespace tandrel
