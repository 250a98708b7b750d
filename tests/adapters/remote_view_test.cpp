#include "adapters/asio/asio_loop.h"
#include "adapters/linux/remote_view.h"
#include "tests/temp_folder.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

namespace fs = std::filesystem;

TEST(RemoteView, TellsWhatItsProcessSaysEscapedAndOnce) {
    const fs::path program = fs::read_symlink("/proc/self/exe").parent_path() / "tarnex-view";
    WriteFile(program,
              "#!/bin/sh\n"
              "for i in 1 2; do printf '\\002\\005\\0\\0\\0\\0\\0\\0\\0\\033[2J\\n' >&3; done\n"
              "printf '\\001\\004\\0\\0\\0\\0\\0\\0\\0\\rbye' >&3\n");
    fs::permissions(program, fs::perms::owner_all);
    setenv("DISPLAY", ":0", 1);
    AsioLoop loop;
    std::vector<std::string> told;
    RemoteView view({.clock = loop,
                     .descriptors = loop,
                     .notice = [&](const std::string& line) { told.push_back(line); },
                     .lost = {}});
    EXPECT_EQ(view.Open(), "\\rbye");
    EXPECT_EQ(told, std::vector<std::string>{"\\x1B[2J\\n"});
    fs::remove(program);
}

} // namespace
} // namespace tarnex
