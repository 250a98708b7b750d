#include "adapters/system/request_socket.h"
#include "tests/contracts/contract.h"
#include "tests/temp_folder.h"

#include <future>

namespace tarnex {
namespace {

// Asks as another program would, while the loop runs here.
std::vector<ServiceAnswer> Ask(AsioLoop& loop, const std::string& path,
                               const std::vector<std::string>& requests) {
    std::vector<std::future<ServiceAnswer>> asking;
    for (const std::string& request : requests)
        asking.push_back(std::async(std::launch::async, AskService, path, request));
    std::vector<ServiceAnswer> answers;
    for (auto& each : asking) {
        RunUntil(loop, [&] { return each.wait_for(0s) == std::future_status::ready; });
        answers.push_back(each.get());
    }
    return answers;
}

TEST(RequestSocket, AnswersEachWhileAnotherIsSilent) {
    const TempFolder folder;
    const bool is_pipe = std::filesystem::path::preferred_separator == '\\';
    const std::string path = is_pipe ? "\\\\.\\pipe\\tarnexcomm-test" : folder / "requests";
    AsioLoop loop;
    {
        RequestSocket socket(loop, [](const std::string& request) { return "no " + request; });
        ASSERT_EQ(socket.Listen(path), "");
        const std::ifstream silent(ToPath(path)); // opens a pipe; nothing where it is a socket
        auto answers = Ask(loop, path, {"a", "b", std::string(60'000, 'c')});
        EXPECT_EQ(answers[0].text, "no a");
        EXPECT_EQ(answers[1].text, "no b");
        EXPECT_EQ(answers[2].text, "no " + std::string(60'000, 'c'));
    }
    EXPECT_NE(Ask(loop, path, {"a"})[0].trouble.find("(it does not run)"), std::string::npos);
}

} // namespace
} // namespace tarnex
