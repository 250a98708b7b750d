#pragma once

#include "ui/fed_form.h"
#include "ui/file_dialog.h"

#include <memory>
#include <optional>

namespace tarnex {

// Keeps copies of the visible forms up to date, elsewhere (FormCopies), and does to the forms what
// the operator has done to the copies. Changes are only marked: while nobody takes a packet they
// cost no memory, and the next packet holds what is so by then.
//
// What the operator does travels for a while. It counts only as far as the logic has not changed
// the very thing meanwhile: he meant what he saw.
class FormFeed : public FileDialog {
  public:
    explicit FormFeed(FeedEvents events);
    ~FormFeed() override;
    FormFeed(const FormFeed&) = delete;
    FormFeed& operator=(const FormFeed&) = delete;

    // The feed is the form's observer until Unwatch. The form must live until then.
    void Watch(Form& form);
    void Unwatch(const Form& form);
    bool AnyVisible() const;
    // Makes every form invisible.
    void HideAll();

    // There is something to tell.
    bool Pending() const;
    // The next part of it, about 64 KB at most and never more than kLongestPacket.
    std::string NextPacket();
    // The copies are gone: all is to be told anew.
    void Forget();
    // What has come back; nothing happens for records that are not about forms and questions.
    void Take(std::string_view packet);

    void Show(const Text& filter, std::function<void(const std::string& path)> chosen) override;
    void Withdraw() override;

  private:
    struct Question {
        std::uint64_t number;
        Text filter;
        std::function<void(const std::string& path)> chosen;
        bool told = false;
    };

    FeedState state_;
    std::vector<std::unique_ptr<FedForm>> forms_;
    std::optional<Question> question_;
    bool withdrawn_ = false; // the question that the copies still know
};

} // namespace tarnex
