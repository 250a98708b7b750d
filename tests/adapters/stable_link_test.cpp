#include "adapters/linux/stable_link.h"
#include "tests/temp_folder.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

namespace fs = std::filesystem;

TEST(StableLink, OnlyALinkOfItsOwnOrALeftOverIsTakenAndRemoved) {
    const TempFolder folder;
    const std::string path = folder / "unit";
    fs::create_symlink("/dev/pts/gone", path);
    {
        StableLink link(path);
        EXPECT_EQ(link.Point("/dev/pts/one"), "");
        EXPECT_EQ(link.Point("/dev/pts/two"), "");
        EXPECT_EQ(fs::read_symlink(path), "/dev/pts/two");
    }
    EXPECT_TRUE(fs::is_empty(folder.Path()));
    for (const char* target : {"/dev/null", "/elsewhere/gone"}) { // in use, of another kind
        fs::create_symlink(target, path);
        EXPECT_NE(StableLink(path).Point("/dev/one"), "");
        EXPECT_EQ(fs::read_symlink(path), target);
        fs::remove(path);
    }
    const fs::path before = fs::current_path();
    fs::current_path(folder.Path());
    EXPECT_NE(StableLink("").Point("/dev/one"), ""); // can be made, and not be put in its place
    EXPECT_TRUE(fs::is_empty(folder.Path()));
    fs::current_path(before);
}

} // namespace
} // namespace tarnex
