#include "settings/ini_document.h"

#include <algorithm>

namespace tarnex {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kDefaultLineEnd = "\r\n";

enum class LineKind { kOther, kSection, kKey };

// One line of the file. Lines are told apart by bytes that are never the second half of a
// double-byte character (LF, CR, blank, ";", "=" and a "[" in front); "]" can be such a half and
// is looked for in the decoded text only.
struct Line {
    LineKind kind = LineKind::kOther;
    Text name;             // of the section or key
    std::size_t begin = 0; // where the line begins
    std::size_t value = 0; // where a key's value begins
    std::size_t end = 0;   // where the line's text ends, its line end not counted
    std::size_t next = 0;  // where the next line begins
};

class LineReader {
  public:
    LineReader(std::string_view content, const CodePage& code_page)
        : content_(content), code_page_(code_page),
          at_(content.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0) {}

    std::optional<Line> Next() {
        if (at_ >= content_.size())
            return std::nullopt;
        Line line;
        line.begin = at_;
        const std::size_t line_feed = content_.find('\n', at_);
        const bool last = line_feed == std::string_view::npos;
        line.end = last ? content_.size() : line_feed;
        line.next = last ? content_.size() : line_feed + 1;
        if (line.end > at_ && content_[line.end - 1] == '\r')
            --line.end;
        Understand(line);
        at_ = line.next;
        return line;
    }

  private:
    void Understand(Line& line) const {
        const std::string_view text = content_.substr(at_, line.end - at_);
        const std::size_t first = text.find_first_not_of(' ');
        if (first == std::string_view::npos || text[first] == ';')
            return;
        if (text[first] == '[') {
            const Text inside = code_page_.Decode(text.substr(first + 1));
            if (const std::size_t close = inside.find(u']'); close != Text::npos) {
                line.kind = LineKind::kSection;
                line.name = Trim(TextView(inside).substr(0, close));
                return;
            }
        }
        const std::size_t equals = text.find('=');
        if (equals == std::string_view::npos || equals == first)
            return;
        line.kind = LineKind::kKey;
        line.name = Trim(code_page_.Decode(text.substr(first, equals - first)));
        line.value = at_ + equals + 1;
    }

    std::string_view content_;
    const CodePage& code_page_;
    std::size_t at_;
};

// Where a setting stands in the file, or else belongs.
struct Place {
    bool section_found = false;
    bool key_found = false;
    Line line;              // of the key
    std::size_t insert = 0; // where the key's line can be added to its section
};

Place Find(std::string_view content, const CodePage& code_page, TextView section, TextView key) {
    Place place;
    LineReader reader(content, code_page);
    while (const auto line = reader.Next()) {
        if (line->kind == LineKind::kSection) {
            if (place.section_found)
                break;
            place.section_found = EqualIgnoringCase(line->name, section);
        }
        if (!place.section_found || line->kind == LineKind::kOther)
            continue;
        if (line->kind == LineKind::kKey && EqualIgnoringCase(line->name, key)) {
            place.key_found = true;
            place.line = *line;
            break;
        }
        // Behind the section's last key: what follows is often the next section's comment.
        place.insert = line->next;
    }
    return place;
}

std::string_view LineEndOf(std::string_view content) {
    const std::size_t line_feed = content.find('\n');
    if (line_feed == std::string_view::npos)
        return kDefaultLineEnd;
    return line_feed > 0 && content[line_feed - 1] == '\r' ? "\r\n" : "\n";
}

// Adds a line at a place where a line begins; at the end of a file whose last line has no line
// end, or half of one, the new last line has none.
std::string InsertLine(const std::string& content, std::size_t at, const std::string& line) {
    const std::string line_end(LineEndOf(content));
    const char before = at > 0 ? content[at - 1] : '\n';
    std::string result = content;
    if (before == '\n')
        return result.insert(at, line + line_end);
    return result.insert(at, (before == '\r' ? "\n" : line_end) + line);
}

bool Contains(TextView text, std::initializer_list<char16_t> characters) {
    return std::ranges::any_of(characters,
                               [&](char16_t c) { return text.find(c) != TextView::npos; });
}

bool CanBeName(const CodePage& code_page, TextView name) {
    return !Contains(name, {u'\r', u'\n', u'\0'}) &&
           code_page.Decode(code_page.Encode(name)) == name;
}

bool CanBeSection(const CodePage& code_page, TextView section) {
    return CanBeName(code_page, section) && !Contains(section, {u']'});
}

bool CanBeKey(const CodePage& code_page, TextView key) {
    return CanBeName(code_page, key) && !key.empty() && !Contains(key, {u'='}) &&
           key.front() != u';' && key.front() != u'[';
}

} // namespace

std::size_t IniDocument::NameHash::operator()(TextView name) const {
    std::size_t hash = 0;
    for (const char16_t c : name)
        hash = hash * 31 + (c >= u'A' && c <= u'Z' ? c - u'A' + u'a' : c);
    return hash;
}

IniDocument::IniDocument(std::string_view content, const CodePage& code_page) {
    ByName<Text>* keys = nullptr;
    LineReader reader(content, code_page);
    while (auto line = reader.Next()) {
        if (line->kind == LineKind::kSection) {
            const auto [section, is_first] = sections_.try_emplace(std::move(line->name));
            keys = is_first ? &section->second : nullptr;
        } else if (line->kind == LineKind::kKey && keys) {
            Text value = code_page.Decode(content.substr(line->value, line->end - line->value));
            value.resize(std::min(value.size(), kLongestValue));
            std::erase(value, u'\0');
            keys->try_emplace(std::move(line->name), std::move(value));
        }
    }
}

TextView IniDocument::Get(TextView section, TextView key) const {
    const auto keys = sections_.find(Trim(section));
    if (keys == sections_.end())
        return {};
    const auto value = keys->second.find(Trim(key));
    return value == keys->second.end() ? TextView() : value->second;
}

std::optional<std::string> IniDocument::Set(const std::string& content, const CodePage& code_page,
                                            TextView section, TextView key, TextView value) {
    section = Trim(section);
    key = Trim(key);
    if (!CanBeSection(code_page, section) || !CanBeKey(code_page, key) ||
        Contains(value, {u'\r', u'\n'}))
        return std::nullopt;

    const std::string bytes = code_page.Encode(value);
    const Place place = Find(content, code_page, section, key);
    if (place.key_found) {
        std::string result = content;
        return result.replace(place.line.value, place.line.end - place.line.value, bytes);
    }
    const std::string line = code_page.Encode(key) + "=" + bytes;
    if (place.section_found)
        return InsertLine(content, place.insert, line);
    const std::string header = "[" + code_page.Encode(section) + "]";
    return InsertLine(content, content.size(), header + std::string(LineEndOf(content)) + line);
}

std::string IniDocument::Remove(const std::string& content, const CodePage& code_page,
                                TextView section, TextView key) {
    section = Trim(section);
    key = Trim(key);
    std::string rest;
    std::size_t kept_from = 0;
    bool inside = false;
    LineReader reader(content, code_page);
    while (const auto line = reader.Next()) {
        if (line->kind == LineKind::kSection) {
            if (inside)
                break;
            inside = EqualIgnoringCase(line->name, section);
        } else if (inside && line->kind == LineKind::kKey && EqualIgnoringCase(line->name, key)) {
            rest.append(content, kept_from, line->begin - kept_from);
            kept_from = line->next;
        }
    }
    return rest.append(content, kept_from);
}

std::vector<IniDocument::KeyLine> IniDocument::KeyLines(std::string_view content,
                                                        const CodePage& code_page) {
    std::vector<KeyLine> lines;
    Text section;
    LineReader reader(content, code_page);
    for (int number = 1; const auto line = reader.Next(); ++number) {
        const std::string_view value = content.substr(line->value, line->end - line->value);
        if (line->kind == LineKind::kSection)
            section = line->name;
        else if (line->kind == LineKind::kKey)
            lines.push_back({number, section, line->name, code_page.Decode(value)});
    }
    return lines;
}

} // namespace tarnex
