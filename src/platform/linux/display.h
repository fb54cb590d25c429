#pragma once

namespace tandrel {

// Whether this process can open windows. Asks the display server instead of trusting a variable,
// since Qt ends the process when it cannot connect. Call before Qt is started.
bool prepareDisplay();

}  // namespace tandrel
