#pragma once

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "ports/panels.h"

namespace tembrix {

// Stores each question until the test answers it, the oldest first. Answering a question that was
// not asked throws, so the test fails.
class FakePanels final : public Panels {
  public:
    template <class Request, class Answer>
    struct Question {
        Request request;
        Answer answer;
    };
    struct Message {
        std::string title;
        std::string message;
        std::string confirmText;  // empty for an alert
        bool operator==(const Message&) const = default;
    };

    void open(const OpenPanelRequest& request,
              std::function<void(std::vector<std::filesystem::path>)> answer) override {
        opens.push_back({request, std::move(answer)});
    }
    void save(const SavePanelRequest& request,
              std::function<void(std::optional<std::filesystem::path>)> answer) override {
        saves.push_back({request, std::move(answer)});
    }
    void alert(const std::string& title, const std::string& message, std::function<void()> closed,
               const std::string&) override {
        alerts.push_back({{title, message, {}}, std::move(closed)});
    }
    void confirm(const std::string& title, const std::string& message,
                 const std::string& confirmText, std::function<void(bool)> answer) override {
        confirms.push_back({{title, message, confirmText}, std::move(answer)});
    }
    void reveal(const std::filesystem::path& folder, std::function<void()> failed) override {
        revealed.push_back(folder);
        if (nothingOpens && failed)
            failed();
    }
    void browse(const std::string& url, std::function<void()> failed) override {
        browsed.push_back(url);
        if (nothingOpens && failed)
            failed();
    }

    void answerOpen(std::vector<std::filesystem::path> files) {
        take(opens).answer(std::move(files));
    }
    void answerSave(std::optional<std::filesystem::path> file) {
        take(saves).answer(std::move(file));
    }
    Message closeAlert() {
        const auto question = take(alerts);
        if (question.answer)
            question.answer();
        return question.request;
    }
    Message answerConfirm(bool yes) {
        const auto question = take(confirms);
        question.answer(yes);
        return question.request;
    }

    // The unanswered questions.
    std::vector<Question<OpenPanelRequest, std::function<void(std::vector<std::filesystem::path>)>>>
        opens;
    std::vector<
        Question<SavePanelRequest, std::function<void(std::optional<std::filesystem::path>)>>>
        saves;
    std::vector<Question<Message, std::function<void()>>> alerts;
    std::vector<Question<Message, std::function<void(bool)>>> confirms;

    bool nothingOpens = false;  // the desktop has no program for anything
    std::vector<std::filesystem::path> revealed;
    std::vector<std::string> browsed;

  private:
    template <class List>
    static typename List::value_type take(List& list) {
        if (list.empty())
            throw std::logic_error("no such question was asked");
        auto question = std::move(list.front());
        list.erase(list.begin());
        return question;
    }
};

}  // namespace tembrix
