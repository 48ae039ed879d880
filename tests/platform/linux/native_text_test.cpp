#include "platform/linux/native_text.h"

#include <gtest/gtest.h>

namespace pxscheduler {
namespace {

TEST(NativeText, KeepsEveryByte) {
  for (const std::string bytes :
       {"", "plain", "Zo\xC3\xAB", "\xE9t\xE9", "\xC3", "\xC3\xC3\xA9", "\xED\xB2\x80",
        "\xF0\x9F\x8E", "\xF0\x9F\x8E\x82\xFF", "a\xC0\xAF"})
    EXPECT_EQ(ToNative(FromNative(bytes)), bytes);
  EXPECT_EQ(FromNative("Zo\xC3\xAB \xE9"), L"Zo\u00EB \xDCE9");
}

TEST(NativeText, TurnsPathsAround) {
  EXPECT_EQ(FromNativePath("/home/a b/x.qzw"), L"\\home\\a b\\x.qzw");
  EXPECT_EQ(ToNativePath(L"\\home\\a/b\\x"), "/home/a/b/x");
}

}  // namespace
}  // namespace pxscheduler
