#include "aiconnect/crash_points.h"

#include <cerrno>
#include <utility>

#include <sys/stat.h>

namespace tandrel {
namespace {

int passed = 0;
int wanted = 0;
std::function<void()> action;

void pass() {
    if (++passed == wanted) std::exchange(action, nullptr)();
}

bool isFile(int fd) {
    struct stat info{};
    return ::fstat(fd, &info) == 0 && (S_ISREG(info.st_mode) || S_ISDIR(info.st_mode));
}

template <typename Call, typename... Arguments>
auto between(Call call, Arguments... arguments) {
    pass();
    const auto result = call(arguments...);
    const int code = errno;
    pass();
    errno = code;
    return result;
}

}  // namespace

void CrashPoints::at(int number, std::function<void()> act) {
    passed = 0;
    wanted = number;
    action = std::move(act);
}

int CrashPoints::count() { return passed; }

}  // namespace tandrel

using tandrel::between;

// NOLINTBEGIN(bugprone-reserved-identifier): the linker's --wrap gives these names
extern "C" {
ssize_t __real_write(int, const void*, size_t);
int __real_rename(const char*, const char*);
int __real_renameat2(int, const char*, int, const char*, unsigned);
int __real_link(const char*, const char*);
int __real_unlink(const char*);
int __real_mkostemp(char*, int);
int __real_fchmod(int, mode_t);
int __real_fchown(int, uid_t, gid_t);

// Half of it first: a write may be cut short by a crash.
ssize_t __wrap_write(int fd, const void* bytes, size_t size) {
    if (!tandrel::isFile(fd)) return __real_write(fd, bytes, size);
    return between(__real_write, fd, bytes, size > 1 ? size / 2 : size);
}
// A killed process loses nothing that the system holds, so the disk need not turn.
int __wrap_fsync(int) {
    return between([] { return 0; });
}
int __wrap_rename(const char* from, const char* to) { return between(__real_rename, from, to); }
int __wrap_renameat2(int folder, const char* from, int toFolder, const char* to, unsigned flags) {
    return between(__real_renameat2, folder, from, toFolder, to, flags);
}
int __wrap_link(const char* from, const char* to) { return between(__real_link, from, to); }
int __wrap_unlink(const char* path) { return between(__real_unlink, path); }
int __wrap_mkostemp(char* name, int flags) { return between(__real_mkostemp, name, flags); }
int __wrap_fchmod(int fd, mode_t mode) { return between(__real_fchmod, fd, mode); }
int __wrap_fchown(int fd, uid_t user, gid_t group) {
    return between(__real_fchown, fd, user, group);
}
}
// NOLINTEND(bugprone-reserved-identifier)
