#pragma once

#include "base/result.h"
#include "http/loopback_url.h"

namespace tandrel {

// Where the engine is to be found: TANDREL_ENGINE_URL, else the port in TANDREL_ENGINE_PORT, else
// the port that the engine wrote down when it started, else the usual port. Apps may start this
// program with nothing but HOME and PATH in its environment.
Result<LoopbackUrl> engineUrl();

}  // namespace tandrel
