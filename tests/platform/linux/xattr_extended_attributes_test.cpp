#include "platform/linux/xattr_extended_attributes.h"

#include <cerrno>
#include <fstream>

#include <gtest/gtest.h>
#include <sys/xattr.h>

#include "support/temporary_folder.h"

namespace tandrel {
namespace {

TEST(XattrExtendedAttributes, GiveTheTextThatWasSetOnAFileOrFolder) {
    const TemporaryFolder folder;
    const auto file = folder.path() / "file";
    std::ofstream(file) << "x";
    XattrExtendedAttributes attributes;
    for (const auto& path : {file, folder.path()}) {
        EXPECT_EQ(attributes.text(path, "com.apple.quarantine"), std::nullopt);
        const std::string text = "0081;5f3b;Browser;";
        if (::setxattr(path.c_str(), "user.com.apple.quarantine", text.data(), text.size(), 0) !=
                0 &&
            errno == ENOTSUP) {
            GTEST_SKIP() << "this file system keeps no attributes";
        }
        EXPECT_EQ(attributes.text(path, "com.apple.quarantine"), text);
        EXPECT_EQ(attributes.text(path, "com.apple"), std::nullopt);
        ASSERT_EQ(::setxattr(path.c_str(), "user.empty", "", 0, 0), 0);
        EXPECT_EQ(attributes.text(path, "empty"), std::nullopt);
    }
    EXPECT_EQ(attributes.text(folder.path() / "none", "com.apple.quarantine"), std::nullopt);
}

}  // namespace
}  // namespace tandrel
