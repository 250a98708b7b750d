#pragma once

#include "ui/file_dialog.h"
#include "ui/form.h"
#include "ui/form_wire.h"

#include <map>
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
    struct Events {
        std::function<void()> shown;   // a form became visible
        std::function<void()> hidden;  // a form is not visible any more
        std::function<void()> changed; // something is pending
    };
    explicit FormFeed(Events events);
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
    class Fed;
    struct Question {
        std::uint64_t number;
        Text filter;
        std::function<void(const std::string& path)> chosen;
        bool told = false;
    };

    void Act(WireReader& packet, ViewRecord record);

    Events events_;
    std::vector<std::unique_ptr<Fed>> forms_;
    std::vector<std::uint64_t> closed_; // numbers that the copies still know
    std::uint64_t last_number_ = 0;
    std::optional<Question> question_;
    bool withdrawn_ = false; // the question that the copies still know
};

} // namespace tarnex
