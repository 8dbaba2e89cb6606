#pragma once

#include <QAbstractButton>
#include <optional>

#include "core/records/annotation_records.h"

namespace tembrix {

// One tag of the panel: filled with the tag's color, with its hot key as a small cap, the number
// of its stamps at the corner, and, while its interval is open, a ring and the running time.
class TagButton final : public QAbstractButton {
    Q_OBJECT
  public:
    TagButton(const Tag& tag, QWidget* parent = nullptr);

    const Tag& tag() const { return tag_; }

    bool setCount(int count);  // false: it is the count that shows already
    // Seconds since the interval was opened; absent while it is closed.
    void setRunningTime(std::optional<double> seconds);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void nextCheckState() override {}  // an open interval is the flow's to tell

  private:
    bool isInterval() const { return tag_.isInterval.value_or(false); }

    Tag tag_;
    QString cap_;
    int nameWidth_;  // measured once: a panel lays out and paints many buttons at a time
    int capWidth_ = 0;
    std::optional<int> count_;
    QString runningTime_;  // empty while closed
};

}  // namespace tembrix
