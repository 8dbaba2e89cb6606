#pragma once

#include <QObject>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/signal.h"

#include "ports/panels.h"
#include "ports/texts.h"

namespace tembrix {

// Panels whose save panels for a named window never come up under the fingers of a user who is
// working elsewhere. If that window is not in use, or the user gives the panel up, a bar in it and
// in the list window offers to save. The question is answered once the user has chosen a place or
// discarded the product. Everything else goes on to the panels behind.
class ProductQuestions final : public Panels {
  public:
    // `home` is the name of the list window.
    ProductQuestions(Panels& panels, const Texts& texts, std::string home);
    ~ProductQuestions() override;

    // Holds the video while one of these save panels is open. A bar holds nothing.
    std::function<Subscription()> pauseVideo;

    void open(const OpenPanelRequest& request,
              std::function<void(std::vector<std::filesystem::path>)> answer) override;
    void save(const SavePanelRequest& request,
              std::function<void(std::optional<std::filesystem::path>)> answer) override;
    void alert(const std::string& title, const std::string& message, std::function<void()> closed,
               const std::string& window) override;
    void confirm(const std::string& title, const std::string& message,
                 const std::string& confirmText, std::function<void(bool)> answer) override;
    void reveal(const std::filesystem::path& folder, std::function<void()> failed) override;
    void browse(const std::string& url, std::function<void()> failed) override;

  private:
    struct Question;
    using Shared = std::shared_ptr<Question>;

    void ask(const Shared& question);
    void wait(const Shared& question);
    void showBar(const Shared& question, QWidget* host);
    void discard(const Shared& question);
    void removeBars(const Shared& question);

    Panels& panels_;
    const Texts& texts_;
    const std::string home_;
    bool opensNext_ = false;  // the user has just closed the message that announces the panel
    std::vector<Shared> waiting_;
    QObject receiver_;
};

}  // namespace tembrix
