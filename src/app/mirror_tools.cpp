#include "app/mirror_tools.h"

#include <iostream>

#include "app/wiring.h"
#include "platform/linux/chosen_languages.h"
#include "screen/mirror_command.h"

namespace tandrel {

std::optional<int> runMirrorTool(const Arguments& arguments) {
    auto makeRecognizer = []() -> Result<std::unique_ptr<TextRecognizer>> {
        const auto settings = std::make_shared<JsonUserDefaults>(AppFiles::of({}).settings);
        return std::make_unique<ChosenLanguages>(
            [settings] { return settings->textValue("languages").value_or("eng"); });
    };
    MirrorServices services{.out = std::cout, .err = std::cerr, .makeRecognizer = makeRecognizer};
    return mirrorCommand(arguments, services);
}

}  // namespace tandrel
