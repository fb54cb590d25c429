#pragma once

#include <memory>

#include "payments/guard_cases.h"
#include "platform/text_recognizer.h"
#include "platform/virtual/fonts.h"

namespace tandrel {

// Draws cases of the payment guard as the virtual phone would show them, and reads them with this
// computer's text recogniser. One thread at a time.
class DrawnCases final : public PaymentGuard::CaseReader {
 public:
    // The error says why there is no text recognition.
    static Result<std::unique_ptr<DrawnCases>> make();

    Result<PaymentGuard::JudgedScreen> draw(const PaymentGuard::WrittenScreen& screen,
                                            const PaymentGuard::WrittenAction& action) override;
    Result<PaymentGuard::JudgedScreen> read(const std::filesystem::path& picture,
                                            const PaymentGuard::Action& action) override;

 private:
    explicit DrawnCases(std::unique_ptr<TextRecognizer> recognizer);
    Result<PaymentGuard::JudgedScreen> judged(const PixelBuffer& picture,
                                              PaymentGuard::Action action);

    const std::unique_ptr<TextRecognizer> recognizer_;
    Fonts fonts_;
};

}  // namespace tandrel
