#include "platform/sha256.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

/// The examples of FIPS 180-4, in pieces of every size that meets the blocks in another way.
TEST(Sha256, GivesThePublishedDigests)
{
    const std::pair<std::string, const char*> cases[] = {
        {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
        {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
         "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
        {std::string(1'000'000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
    };
    for (const auto& [text, digest] : cases) {
        for (const std::size_t piece : {1, 55, 64, 65, 1'000'000}) {
            Sha256 hash;
            for (std::size_t at = 0; at < text.size(); at += piece)
                hash.Add(std::string_view(text).substr(at, piece));
            EXPECT_EQ(hash.Finish(), digest) << piece;
        }
    }
}

} // namespace
} // namespace velmora
