#pragma once

#include <filesystem>
#include <string>

namespace tarnex {

// A symbolic link that stands for something whose own name changes. Goes with its owner.
class StableLink {
  public:
    explicit StableLink(std::string path) : path_(std::move(path)) {}
    StableLink(const StableLink&) = delete;
    StableLink& operator=(const StableLink&) = delete;
    ~StableLink() { Remove(); }

    const std::string& Path() const { return path_; }
    // Makes the link lead to target in one step. "", or what stands in the way: only a link of this
    // object, or one that leads to something of target's folder that is gone, is replaced.
    std::string Point(const std::string& target);
    // Removes the link unless it has been made to lead elsewhere since.
    void Remove();

  private:
    bool LeftOver(const std::filesystem::path& present, const std::filesystem::path& target) const;

    const std::string path_;
    std::string target_; // "": no link made
};

} // namespace tarnex
