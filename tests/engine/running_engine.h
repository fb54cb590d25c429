#pragma once

#include <memory>
#include <string>

#include "app/wiring.h"
#include "http/client.h"
#include "payments/asker.h"
#include "platform/linux/linux_main_loop.h"
#include "platform/virtual/virtual_platform.h"
#include "support/temporary_folder.h"

namespace tandrel {

// The owner's time to answer, in seconds: enough for reading the screen twice, which takes seconds
// when threads are watched.
#ifdef __SANITIZE_THREAD__
inline constexpr int kGuardTimeout = 30;
#else
inline constexpr int kGuardTimeout = 3;
#endif

// The whole engine as the application wires it, on free ports and with a home folder of its own,
// serving virtual phones to whoever connects.
class RunningEngine {
 public:
    static constexpr const char* kDefaultPhone = "1";

    // `phones` as in TANDREL_VIRTUAL_PHONE. An engine started again with the same `home` is a
    // restart. `owner` answers the guard's questions and outlives the engine; without one nobody
    // does. `recognizer` reads the screens in place of this computer's own.
    explicit RunningEngine(
        const std::string& phones = kDefaultPhone,
        std::shared_ptr<TemporaryFolder> home = std::make_shared<TemporaryFolder>(),
        Asker* owner = nullptr, std::unique_ptr<TextRecognizer> recognizer = nullptr);

    ClientResponse get(const std::string& target);
    ClientResponse post(const std::string& target, const Json& body);
    // The "error" of a reply with this status; anything else is told as it came.
    static std::string errorOf(const ClientResponse& reply, int status);
    std::string refusal(const std::string& target, const Json& body, int status = 400);
    // Blocks until a phone shows this page; false when it does not come to that.
    bool awaitPage(const std::string& page, std::size_t index = 0);

    // Blocks until every virtual phone is a connected host with a frame.
    void awaitPhones();
    // The same until each is also matched to its screen.
    void awaitMatched();

    const LoopbackUrl& url() const { return url_; }
    VirtualPhone& phone(std::size_t index = 0);
    Wiring& wiring() { return *wiring_; }
    // The engine's main loop, which nobody runs unless the test does.
    MainLoop& loop() { return loop_; }
    const std::filesystem::path& home() const { return home_->path(); }
    const std::shared_ptr<TemporaryFolder>& homeFolder() const { return home_; }
    static std::string scenario(const std::string& file);

 private:
    bool allPhones(bool (*fits)(const Json& device));

    const std::shared_ptr<TemporaryFolder> home_;
    LinuxMainLoop loop_;
    NobodyAsker nobody_;
    std::unique_ptr<Wiring> wiring_;
    LoopbackUrl url_;
};

// The middle of an icon on the default phone's home screen.
inline Json settingsIcon() { return {{"x", 0.616}, {"y", 0.243}, {"fraction", true}}; }

}  // namespace tandrel
