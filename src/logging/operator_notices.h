#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tarnex {

// What an operator must act on, said in plain words: once, and again only when it changes.
class OperatorNotices {
  public:
    using Sink = std::function<void(const std::string& line)>; // one line of UTF-8, no line end
    explicit OperatorNotices(Sink sink) : sink_(std::move(sink)) {}

    // trouble: what is wrong with topic and what to do; "" when nothing is (any more), which is
    // said once as recovered, and only after trouble.
    void Report(const std::string& topic, const std::string& trouble,
                const std::string& recovered) {
        std::string& last = last_[topic];
        if (trouble == last)
            return;
        last = trouble;
        sink_(trouble.empty() ? recovered : trouble);
    }

    // What is wrong now, in the order of the topics' names.
    std::vector<std::string> Troubles() const {
        std::vector<std::string> troubles;
        for (const auto& [topic, trouble] : last_)
            if (!trouble.empty())
                troubles.push_back(trouble);
        return troubles;
    }

  private:
    Sink sink_;
    std::map<std::string, std::string> last_;
};

} // namespace tarnex
