#pragma once

#include <QDialog>
#include <QPointer>
#include <string_view>
#include <utility>

#include "base/signal.h"

#include "ports/texts.h"

#include "app/widgets/controls.h"

class QHBoxLayout;
class QLabel;
class QPushButton;
class QVBoxLayout;

namespace tembrix {

// A question or a form that is shown over a window as a card and blocks only that window. present()
// returns at once; the result is reported by the signals finished(int), accepted() and rejected().
// Return presses the focused button or else the default button. Escape rejects.
//
//     auto* sheet = new Sheet(window, texts, "renameTitle");
//     sheet->content()->addWidget(field);
//     sheet->addCancelButton("cancelButtonTitle");
//     auto* save = sheet->addAcceptButton("save");
//     connect(sheet, &QDialog::accepted, ...);
//     sheet->present();
class Sheet : public QDialog {
    Q_OBJECT
  public:
    static constexpr int edge = 20;  // between the border and the content

    // The text of the title key names the sheet as well.
    Sheet(QWidget* parent, const Texts& texts, std::string_view titleKey);

    void setTitle(const QString& title);

    // The layout for the sheet's controls, below the title.
    QVBoxLayout* content() const { return content_; }

    // Buttons are added to a row at the lower right, in the order of the calls. The accept button
    // is the default button, unless it destroys something: then the cancel button is, and has the
    // focus. If `closes` is false, the owner calls accept() once the answer is
    // valid.
    QPushButton* addAcceptButton(std::string_view key, ButtonLook look = ButtonLook::accented,
                                 bool closes = true);
    QPushButton* addCancelButton(std::string_view key);
    // Adds a button on the left that does not close the sheet.
    QPushButton* addSideButton(std::string_view key, ButtonLook look = ButtonLook::quiet);

    // Which hot keys work while the sheet has the focus: none, those of the window under it, which
    // suits messages, or those of the labels that it offers.
    enum class Hotkeys { none, ofWindow, ofLabels };
    void setHotkeys(Hotkeys hotkeys) { hotkeys_ = hotkeys; }
    Hotkeys hotkeys() const { return hotkeys_; }
    bool keepsHotkeys() const { return hotkeys_ == Hotkeys::ofWindow; }

    // Keeps the sheet over its window rather than over the windows beside it.
    void keepOverWindow() { keepsOverWindow_ = true; }

    // Ends when the sheet is closed, such as a pause of the video.
    void holdWhileOpen(Subscription scope) { scope_ = std::move(scope); }

    // Shows the sheet. It is deleted after it has been closed. The keyboard focus is then where it
    // was before, or in a sheet that was presented in answer to this one.
    void present();
    void done(int result) override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

    const Texts& texts() const { return texts_; }

  private:
    void showTitle(const QString& title);
    void preferCancel();
    void moveOverWindow();
    void giveFocusBack();

    const Texts& texts_;
    bool hasOwnTitle_ = false;
    QLabel* title_;
    QVBoxLayout* content_;
    QHBoxLayout* buttons_;
    QPushButton* cancel_ = nullptr;
    bool destroys_ = false;
    int sideButtons_ = 0;
    Hotkeys hotkeys_ = Hotkeys::none;
    bool keepsOverWindow_ = false;
    Subscription scope_;
    QPointer<QWidget> windowBefore_;
    QPointer<QWidget> focusBefore_;
    bool isFollowed_ = false;  // by another sheet
};

}  // namespace tembrix
