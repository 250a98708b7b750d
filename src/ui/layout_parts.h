#pragma once

#include "ui/layout.h"

namespace tarnex::layout_parts {

// Words to write layouts with.

using Kind = LayoutNode::Kind;
using Look = LayoutNode::Look;
using Nodes = std::vector<LayoutNode>;

inline LayoutNode Row(Nodes children, int weight = 0) {
    return {.kind = Kind::kRow, .children = std::move(children), .weight = weight};
}

inline LayoutNode Column(Nodes children, int weight = 0) {
    return {.kind = Kind::kColumn, .children = std::move(children), .weight = weight};
}

inline LayoutNode Heading(Text title) {
    return {.kind = Kind::kHeading, .title = std::move(title)};
}

// Pushes its neighbours apart.
inline LayoutNode Space() {
    return {.kind = Kind::kSpace, .weight = 1};
}

inline LayoutNode Press(std::string button, char key, Text hint) {
    return {
        .kind = Kind::kButton, .control = std::move(button), .key = key, .hint = std::move(hint)};
}

inline LayoutNode Careful(LayoutNode button) {
    button.look = Look::kCareful;
    return button;
}

inline LayoutNode Check(std::string box, char key, Text hint) {
    return {
        .kind = Kind::kCheckBox, .control = std::move(box), .key = key, .hint = std::move(hint)};
}

inline LayoutNode Field(std::string box, Text title, int ems, Look look = Look::kPlain) {
    return {.kind = Kind::kTextBox,
            .control = std::move(box),
            .title = std::move(title),
            .ems = ems,
            .look = look};
}

inline LayoutNode ListOf(std::string box, int ems, int lines) {
    return {
        .kind = Kind::kListBox, .control = std::move(box), .weight = 1, .ems = ems, .lines = lines};
}

// One below the other, further apart than what stands in them.
inline LayoutNode Sections(Nodes sections, int weight = 0) {
    LayoutNode column = Column(std::move(sections), weight);
    column.gap = 10;
    return column;
}

// A list box under its heading. What else stands beside the heading follows it at once, so that it
// stays where it is when the list becomes wider.
inline LayoutNode ListSection(Text title, std::string list, int lines, int weight,
                              Nodes beside = {}) {
    Nodes head{Heading(std::move(title))};
    head.insert(head.end(), beside.begin(), beside.end());
    head.push_back(Space());
    LayoutNode section = Column({Row(std::move(head)), ListOf(std::move(list), 12, lines)}, weight);
    section.gap = 3;
    return section;
}

inline LayoutNode Status(std::string label, int ems) {
    return {.kind = Kind::kLabel,
            .control = std::move(label),
            .weight = 1,
            .ems = ems,
            .look = Look::kStrong};
}

} // namespace tarnex::layout_parts
