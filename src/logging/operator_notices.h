#pragma once

#include "platform/notice_level.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tarnex {

// Something that an operator must act on.
struct NoticedTrouble {
    std::string topic; // what it is about, in lower case; there is one trouble a topic
    NoticeLevel level = NoticeLevel::kWarning;
    std::string text; // in plain words, UTF-8
    friend bool operator==(const NoticedTrouble&, const NoticedTrouble&) = default;
};

// What an operator must act on, said in plain words: once, and again only when it changes.
class OperatorNotices {
  public:
    // line: one of UTF-8, no line end.
    using Sink = std::function<void(NoticeLevel level, const std::string& line)>;
    explicit OperatorNotices(Sink sink) : sink_(std::move(sink)) {}

    // trouble: what is wrong with topic and what to do; "" when nothing is (any more), which is
    // said once as recovered, and only after trouble.
    void Report(const std::string& topic, const std::string& trouble, const std::string& recovered,
                NoticeLevel level = NoticeLevel::kWarning) {
        NoticedTrouble& last = last_[topic];
        if (trouble == last.text)
            return;
        last = {.topic = topic, .level = level, .text = trouble};
        trouble.empty() ? sink_(NoticeLevel::kNotice, recovered) : sink_(level, trouble);
    }

    bool Troubled(const std::string& topic) const {
        const auto found = last_.find(topic);
        return found != last_.end() && !found->second.text.empty();
    }
    // What is wrong now, in the order of the topics' names.
    std::vector<NoticedTrouble> Troubles() const {
        std::vector<NoticedTrouble> troubles;
        for (const auto& [topic, trouble] : last_)
            if (!trouble.text.empty())
                troubles.push_back(trouble);
        return troubles;
    }

  private:
    Sink sink_;
    std::map<std::string, NoticedTrouble> last_;
};

} // namespace tarnex
