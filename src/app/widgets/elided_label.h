#pragma once

#include <QLabel>

namespace tembrix {

// One line of text, elided if there is not enough room; the tooltip then shows the full text.
// Screen readers always read the full text.
class ElidedLabel final : public QLabel {
    Q_OBJECT
  public:
    explicit ElidedLabel(const QString& text = {}, QWidget* parent = nullptr);

    void setFullText(const QString& text);
    const QString& fullText() const { return full_; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    void elide();

    QString full_;
};

}  // namespace tembrix
