#pragma once

#include <QAbstractButton>
#include <optional>

#include "core/records/annotation_records.h"

namespace tembrix {

// The button of one tag, filled with the tag's color. It shows the hot key, the number of stamps in
// the corner and, while an interval is open, a ring and the running time.
class TagButton final : public QAbstractButton {
    Q_OBJECT
  public:
    // A compact button is small and shortens long names.
    TagButton(const Tag& tag, bool compact, QWidget* parent = nullptr);

    const Tag& tag() const { return tag_; }

    bool setCount(int count);  // returns whether the shown count has changed
    // Seconds since the interval was opened; absent while it is closed.
    void setRunningTime(std::optional<double> seconds);
    const QString& runningTime() const { return runningTime_; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void nextCheckState() override {}  // the checked state is set by the view

  private:
    struct Density;
    static const Density& density(bool compact);

    bool isInterval() const { return tag_.isInterval.value_or(false); }

    const Density& density_;
    Tag tag_;
    QString cap_;
    int nameWidth_;  // cached, because a panel lays out and paints many buttons at a time
    int capWidth_ = 0;
    std::optional<int> count_;
    QString runningTime_;  // empty while closed
};

}  // namespace tembrix
