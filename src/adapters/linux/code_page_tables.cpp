#include "adapters/system/system_code_page.h"

#include <bit>

#include <iconv.h>

namespace tarnex {

namespace {

constexpr const char* kTextCode =
    std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";

// Opened by its first use, so that a program that meets only ASCII never loads the tables.
class Converter {
  public:
    Converter(std::string to, std::string from) : to_(std::move(to)), from_(std::move(from)) {}
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;
    ~Converter() {
        if (Usable())
            iconv_close(handle_);
    }

    // Gives the size of what stands in output; 0 when the input has no counterpart.
    std::size_t Convert(const void* input, std::size_t size, void* output, std::size_t room) {
        if (!handle_)
            handle_ = iconv_open(to_.c_str(), from_.c_str());
        if (!Usable())
            return 0;
        iconv(handle_, nullptr, nullptr, nullptr, nullptr);
        char* in = const_cast<char*>(static_cast<const char*>(input)); // iconv only reads it
        char* out = static_cast<char*>(output);
        std::size_t left = room;
        const bool converted = iconv(handle_, &in, &size, &out, &left) == 0;
        return converted ? room - left : 0;
    }

  private:
    // iconv_open() reports failure as the pointer -1.
    bool Usable() const { return handle_ && reinterpret_cast<std::intptr_t>(handle_) != -1; }

    std::string to_;
    std::string from_;
    iconv_t handle_ = nullptr;
};

class IconvTables : public SystemCodePage::Tables {
  public:
    explicit IconvTables(const std::string& name)
        : encoder_(name, kTextCode), decoder_(kTextCode, name) {}

    std::size_t Encode(TextView character, char (&bytes)[8]) override {
        return encoder_.Convert(character.data(), character.size() * sizeof(char16_t), bytes,
                                sizeof bytes);
    }
    std::size_t Decode(std::string_view character, char16_t (&units)[4]) override {
        return decoder_.Convert(character.data(), character.size(), units, sizeof units) /
               sizeof(char16_t);
    }

  private:
    Converter encoder_;
    Converter decoder_;
};

} // namespace

SystemCodePage::SystemCodePage(std::string_view name)
    : SystemCodePage(name, std::make_unique<IconvTables>(std::string(name))) {}

} // namespace tarnex
