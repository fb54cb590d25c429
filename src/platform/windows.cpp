#include "platform/windows.h"

#include <cmath>

namespace tandrel {
namespace {

std::int64_t whole(double value) { return static_cast<std::int64_t>(std::trunc(value)); }

}  // namespace

Json WinInfo::json() const {
    return {{"id", id},
            {"owner", owner},
            {"bundle", bundle},
            {"pid", pid},
            {"title", title},
            {"layer", layer},
            {"onScreen", onScreen},
            {"x", whole(frame.x)},
            {"y", whole(frame.y)},
            {"w", whole(frame.width)},
            {"h", whole(frame.height)},
            {"score", score}};
}

Error windowIsGone(std::uint32_t id) { return {"window " + std::to_string(id) + " is gone", 503}; }

}  // namespace tandrel
