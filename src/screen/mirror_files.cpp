#include "image/image_reader.h"
#include "screen/content_rect.h"
#include "screen/mirror_tools.h"
#include "screen/recognize.h"

namespace tandrel::tools {
namespace {

// The picture named by the argument after the tool's name.
Result<PixelBuffer> operandImage(const MirrorArgs& args) {
    auto image = readImage(args[1]);
    if (!image) return fail("cannot read " + args[1]);
    return image;
}

}  // namespace

Result<Json> ocr(const MirrorArgs& args, MirrorServices& services) {
    const PixelBuffer image = TRY(operandImage(args));
    const auto recognizer = TRY(services.makeRecognizer());
    const ReadText text = TRY(readText(*recognizer, image));
    return toJson(text.records);
}

Result<Json> detectRect(const MirrorArgs& args, MirrorServices&) {
    const PixelBuffer image = TRY(operandImage(args));
    return withPixels(image, [&](const Pixels& pixels) {
        return detectContent(pixels, parseAspect(option(args, "--aspect")),
                             option(args, "--prefer"))
            .json();
    });
}

}  // namespace tandrel::tools
