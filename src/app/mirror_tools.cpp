#include "app/mirror_tools.h"

#include <iostream>

#include "platform/linux/linux_text_recognizer.h"
#include "screen/mirror_command.h"

namespace tandrel {

std::optional<int> runMirrorTool(const Arguments& arguments) {
    MirrorServices services{
        .out = std::cout, .err = std::cerr, .makeRecognizer = makeTextRecognizer};
    return mirrorCommand(arguments, services);
}

}  // namespace tandrel
