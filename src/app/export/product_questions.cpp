#include "app/export/product_questions.h"

#include <QApplication>
#include <QDialog>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <set>
#include <utility>

#include "base/shortened.h"
#include "base/utf8_text.h"

#include "app/commands/command_menu_bar.h"
#include "app/export/lower_bar.h"
#include "app/export/waiting_panel.h"
#include "app/widgets/controls.h"
#include "app/widgets/notice_bar.h"
#include "app/widgets/qt_text.h"
#include "core/commands/command_table.h"

namespace tembrix {
namespace {

// The visible window of that name, or the window around the pane of that name.
QWidget* openWindow(const std::string& name) {
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible() && !qobject_cast<QDialog*>(window) &&
            (window->objectName() == qtext(name) || window->findChild<QWidget*>(qtext(name))))
            return window;
    return nullptr;
}

// Whether the user works in that window or in another one of its project, not in a sheet, a menu or
// a text field, which would lose keys to a panel.
bool isInUse(const std::string& name, const std::string& home) {
    QWidget* active = QApplication::activeWindow();
    if (!active || qobject_cast<QDialog*>(active) || QApplication::activePopupWidget() ||
        qobject_cast<QLineEdit*>(QApplication::focusWidget()))
        return false;
    const CommandMenuBar* menus = CommandMenuBar::of(active);
    return active == openWindow(name) ||
           (name != home && menus && menus->scope() == CommandScope::project);
}

}  // namespace

struct ProductQuestions::Question {
    SavePanelRequest request;
    std::function<void(std::optional<std::filesystem::path>)> answer;
    QPointer<QWidget> window;  // that asks
    std::vector<QPointer<LowerBar>> bars = {};

    void end(std::optional<std::filesystem::path> file) {
        if (const auto callback = std::exchange(answer, nullptr))
            callback(std::move(file));
    }
};

ProductQuestions::ProductQuestions(Panels& panels, const Texts& texts, std::string home)
    : panels_(panels), texts_(texts), home_(std::move(home)) {
    // A product that nobody can see any more is offered again by the next start.
    QObject::connect(qApp, &QGuiApplication::lastWindowClosed, &receiver_, [this] {
        if (!waiting_.empty())
            QCoreApplication::quit();
    });
}

ProductQuestions::~ProductQuestions() = default;

void ProductQuestions::save(const SavePanelRequest& request,
                            std::function<void(std::optional<std::filesystem::path>)> answer) {
    if (request.window.empty())
        return panels_.save(request, std::move(answer));
    const Shared question(new Question{request, std::move(answer), openWindow(request.window)});
    if (isInUse(request.window, home_) || opensNext_)
        ask(question);
    else
        wait(question);
}

void ProductQuestions::ask(const Shared& question) {
    const auto pause = std::make_shared<Subscription>(pauseVideo ? pauseVideo() : Subscription());
    const bool hasWindow = question->window;
    panels_.save(question->request, [this, question, pause, hasWindow](auto file) {
        pause->reset();
        // The panel closes with its window, which is no answer of the user.
        if (file || (hasWindow && !(question->window && question->window->isVisible())))
            question->end(std::move(file));
        else
            wait(question);
    });
}

void ProductQuestions::wait(const Shared& question) {
    waiting_.push_back(question);
    for (const auto& name : std::set{question->request.window, home_})
        if (QWidget* host = openWindow(name))
            showBar(question, host);
    if (question->bars.empty()) {
        removeBars(question);
        return ask(question);
    }
    if (question->window)
        QObject::connect(question->window, &QObject::destroyed, &receiver_, [this, question] {
            removeBars(question);
            question->end(std::nullopt);
        });
}

void ProductQuestions::showBar(const Shared& question, QWidget* host) {
    auto* bar = new LowerBar(texts_, "productReady", "productReadyDiscard", host);
    auto* button = makeButton(texts_, "productReadySave", ButtonLook::accented, bar);
    button->setFocusPolicy(Qt::TabFocus);  // a click leaves the focus where it is
    bar->addButton(button);
    bar->say([this, name = shortened(question->request.defaultName)] {
        return qtext(texts_.format("productReady", {name}));
    });
    bar->place();
    question->bars.emplace_back(bar);
    // The ring of the run gives way meanwhile. The end of the question ends the run.
    QPointer<WaitingPanel> ring = host->findChild<WaitingPanel*>();
    if (ring)
        ring->vanish();
    QObject::connect(button, &QPushButton::clicked, &receiver_, [this, question, ring] {
        removeBars(question);
        if (ring)
            ring->appear();
        ask(question);
    });
    QObject::connect(bar, &NoticeBar::hiddenByUser, &receiver_,
                     [this, question] { discard(question); });
}

void ProductQuestions::discard(const Shared& question) {
    removeBars(question);
    panels_.confirm(
        texts_.text("productReadyDiscardTitle"),
        texts_.format("productReadyDiscardMessage", {shortened(question->request.defaultName)}),
        texts_.text("productReadyDiscardButton"), [this, question](bool discards) {
            if (discards)
                question->end(std::nullopt);
            else if (question->answer)
                wait(question);
        });
}

void ProductQuestions::removeBars(const Shared& question) {
    std::erase(waiting_, question);
    for (const auto& bar : std::exchange(question->bars, {}))
        if (bar) {
            leaveFocus(bar);
            bar->hide();
            bar->deleteLater();
        }
}

void ProductQuestions::open(const OpenPanelRequest& request,
                            std::function<void(std::vector<std::filesystem::path>)> answer) {
    panels_.open(request, std::move(answer));
}

void ProductQuestions::alert(const std::string& title, const std::string& message,
                             std::function<void()> closed, const std::string& window) {
    panels_.alert(
        title, message,
        [this, closed = std::move(closed)] {
            opensNext_ = true;
            if (closed)
                closed();
            opensNext_ = false;
        },
        window);
}

void ProductQuestions::confirm(const std::string& title, const std::string& message,
                               const std::string& confirmText, std::function<void(bool)> answer) {
    panels_.confirm(title, message, confirmText, std::move(answer));
}

void ProductQuestions::reveal(const std::filesystem::path& folder, std::function<void()> failed) {
    panels_.reveal(folder, std::move(failed));
}

void ProductQuestions::browse(const std::string& url, std::function<void()> failed) {
    panels_.browse(url, std::move(failed));
}

}  // namespace tembrix
