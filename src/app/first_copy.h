#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <thread>

#include "base/file_descriptor.h"
#include "base/mutex.h"
#include "base/result.h"
#include "platform/main_loop.h"

namespace tandrel {

// Starting the application once more shows the window of the copy that runs already. Copies meet at
// a socket that only this user can reach, one for each port of an engine.
class FirstCopy {
 public:
    static std::filesystem::path meetingPlace(std::uint16_t enginePort);

    // Asks the copy that listens there to show its window; whether one said that it does. Bounded.
    static bool ask(const std::filesystem::path& place);

    // Listens there from now on and calls `show` on the main thread for each copy that asks. Fails
    // when another copy listens or the socket cannot be made. `loop` outlives it.
    static Result<std::unique_ptr<FirstCopy>> listen(std::filesystem::path place, MainLoop& loop,
                                                     std::function<void()> show);
    ~FirstCopy();
    FirstCopy(const FirstCopy&) = delete;
    FirstCopy& operator=(const FirstCopy&) = delete;

    // Makes room for a copy that is about to take over. Any thread; safe to repeat.
    void leave();

 private:
    FirstCopy(std::filesystem::path place, FileDescriptor socket, MainLoop& loop,
              std::function<void()> show);
    void serve();

    const std::filesystem::path place_;
    const FileDescriptor socket_;
    const FileDescriptor end_;
    MainLoop& loop_;
    const std::shared_ptr<std::function<void()>> show_;
    Mutex leaving_;
    std::thread thread_ OWNED_BY(leaving_);
};

}  // namespace tandrel
