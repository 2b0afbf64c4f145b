#include "platform/sha256.h"

#include <gtest/gtest.h>
#include <utility>

namespace tarno2 {
namespace {

TEST(Sha256, KnownTexts) {
    const std::pair<std::string, const char*> cases[] = {
        {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
        {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
         "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
        {std::string(1'000'000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
    };
    Sha256 hash;
    ASSERT_TRUE(hash.valid());
    for (const auto& [text, digits] : cases) {
        const auto bytes = std::as_bytes(std::span(text));
        const size_t part = bytes.size() / 3;
        hash.add(bytes.first(part));
        hash.add(bytes.subspan(part));
        EXPECT_EQ(hash.take(), digits);
    }
}

}  // namespace
}  // namespace tarno2
