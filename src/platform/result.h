#pragma once

#include <string>
#include <utility>
#include <variant>

namespace tarnex {

// What stands in the way, in words for an operator.
struct Trouble {
    std::string text;
};

// What a function makes that may fail: a value, or the trouble that it had.
template <class T>
class Result {
  public:
    Result(T value) : content_(std::move(value)) {}
    Result(Trouble trouble) : content_(std::move(trouble)) {}

    explicit operator bool() const { return content_.index() == 0; }
    // Of a result that is true.
    T& operator*() { return *std::get_if<0>(&content_); }
    // "" of a result that is true.
    std::string TroubleText() const { return *this ? "" : std::get_if<1>(&content_)->text; }

  private:
    std::variant<T, Trouble> content_;
};

} // namespace tarnex
