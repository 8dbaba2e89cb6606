#pragma once

#include <QDialog>
#include <string_view>

#include "ports/texts.h"

#include "app/widgets/controls.h"

class QHBoxLayout;
class QLabel;
class QPushButton;
class QVBoxLayout;

namespace tembrix {

// A question or a form that lies over one window like a card and holds back only that window.
// Never blocks: present() returns at once; the signals finished(int), accepted() and rejected()
// tell how it ended. Return presses the button that has the keyboard, else the default one; Escape
// rejects.
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
    // The title's key names the sheet too.
    Sheet(QWidget* parent, const Texts& texts, std::string_view titleKey);

    void setTitle(const QString& title);

    // Where the sheet's own controls go, beneath the title.
    QVBoxLayout* content() const { return content_; }

    // Buttons stand in a row at the lower right, in the order of the calls. The accept button is
    // the default one; with `closes` false the owner calls accept() when the answer is good.
    QPushButton* addAcceptButton(std::string_view key, ButtonLook look = ButtonLook::accented,
                                 bool closes = true);
    QPushButton* addCancelButton(std::string_view key);
    // A further button, at the left; it does not close the sheet.
    QPushButton* addSideButton(std::string_view key, ButtonLook look = ButtonLook::quiet);

    // For a message: the hot keys of its window work while it is up.
    void setKeepsHotkeys() { keepsHotkeys_ = true; }
    bool keepsHotkeys() const { return keepsHotkeys_; }

    // Shows the sheet and deletes it once it has ended.
    void present();

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

    const Texts& texts() const { return texts_; }

  private:
    const Texts& texts_;
    QLabel* title_;
    QVBoxLayout* content_;
    QHBoxLayout* buttons_;
    int sideButtons_ = 0;
    bool keepsHotkeys_ = false;
};

}  // namespace tembrix
