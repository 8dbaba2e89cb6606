#include "app/export/waiting_panel.h"

#include <QEvent>
#include <QGraphicsOpacityEffect>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include "app/theme/theme.h"
#include "app/widgets/accessible.h"
#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/translated.h"

namespace tembrix {

namespace {

constexpr int ringSize = 80;
constexpr int ringWidth = 8;
constexpr int padding = 30;
constexpr int gap = 16;  // between progress ring and button
constexpr double corner = 12;
constexpr int shadowRadius = 20;
constexpr double shadowOpacity = 0.33;
constexpr int fadeTime = 200;  // milliseconds
constexpr int textWidth = 200;

QString percent(double progress) {
    const long rounded = std::lround(100 * progress);
    return QString::number(progress < 1 ? std::min(rounded, 99L) : 100) + QStringLiteral(" %");
}

std::string stepText(const ExportStatus& status, const Texts& texts) {
    switch (status.state) {
        case ExportState::rendering:
            if (status.cuts > 0)
                return texts.format("exportCutsDone",
                                    {std::to_string(status.cutsDone), std::to_string(status.cuts)});
            break;
        case ExportState::packing:
            return texts.text("exportPacking");
        case ExportState::saving:
            return texts.text("exportSaving");
        case ExportState::preparing:
        case ExportState::idle:
            break;
    }
    return texts.text("exportPreparing");
}

std::string leftText(const std::optional<double>& seconds, const Texts& texts) {
    if (!seconds)
        return {};
    if (*seconds < 60) {
        constexpr int step = 5;
        const int rounded = step * static_cast<int>(std::lround(std::ceil(*seconds / step)));
        return texts.format("exportSecondsLeft", {std::to_string(std::max(step, rounded))});
    }
    return texts.format("exportMinutesLeft", {std::to_string(std::lround(*seconds / 60))});
}

}  // namespace

class WaitingPanel::Ring final : public QWidget {
  public:
    Ring(const Texts& texts, QWidget* parent) : QWidget(parent) {
        setFixedSize(ringSize, ringSize);
        nameControl(this, texts, "exportProgress");
        value_ = new AccessibleValue(this, QAccessible::ProgressBar, [this] {
            return AccessibleValue::Reading{std::round(100 * progress_), 0, 100};
        });
    }

    void setProgress(double progress) {
        const double value = std::clamp(progress, 0.0, 1.0);
        if (value == progress_)
            return;
        progress_ = value;
        setAccessibleDescription(percent(value));
        value_->changed(1);
        update();
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const double edge = ringWidth / 2.0;
        const QRectF circle = QRectF(rect()).adjusted(edge, edge, -edge, -edge);
        QColor ground = theme::secondaryText;
        ground.setAlphaF(0.25F);
        painter.setPen(QPen(ground, ringWidth));
        painter.drawEllipse(circle);
        painter.setPen(QPen(theme::accent, ringWidth, Qt::SolidLine, Qt::RoundCap));
        if (progress_ > 0)  // clockwise from the top, in sixteenths of a degree
            painter.drawArc(circle, 90 * 16, -static_cast<int>(std::lround(progress_ * 360 * 16)));
        painter.setPen(theme::text);
        painter.setFont(theme::font(theme::titleSize, QFont::DemiBold));
        painter.drawText(rect(), Qt::AlignCenter, percent(progress_));
    }

  private:
    double progress_ = 0;
    AccessibleValue* value_;
};

WaitingPanel::WaitingPanel(const Texts& texts, QWidget* host)
    : QWidget(host),
      texts_(texts),
      ring_(new Ring(texts, this)),
      opacity_(new QGraphicsOpacityEffect(this)),
      fading_(new QPropertyAnimation(opacity_, "opacity", this)) {
    setObjectName("waitingPanel");
    setGraphicsEffect(opacity_);
    opacity_->setOpacity(0);
    auto* column = new QVBoxLayout(this);
    const int edge = shadowRadius + padding;
    column->setContentsMargins(edge, edge, edge, edge);
    column->setSpacing(gap);
    column->addWidget(ring_, 0, Qt::AlignHCenter);
    step_ = new QLabel(this);
    step_->setObjectName("exportStep");
    step_->setWordWrap(true);
    setLook(step_, LabelLook::body);
    left_ = new QLabel(this);
    left_->setObjectName("exportLeft");
    setLook(left_, LabelLook::secondary);
    auto* words = new QVBoxLayout;
    words->setSpacing(theme::unit);
    for (QLabel* label : {step_, left_}) {
        label->setFixedWidth(textWidth);
        label->setAlignment(Qt::AlignCenter);
        words->addWidget(label);
    }
    column->addLayout(words);
    auto* button = makeButton(texts, "cancelButtonTitle", ButtonLook::plain, this);
    connect(button, &QPushButton::clicked, this, &WaitingPanel::canceled);
    column->addWidget(button, 0, Qt::AlignHCenter);
    connect(fading_, &QPropertyAnimation::finished, this, [this] {
        if (opacity_->opacity() == 0)
            hide();
    });
    host->installEventFilter(this);
    followLanguage(this, texts, [this] { showWords(); });
    hide();
}

void WaitingPanel::appear() {
    center();
    show();
    raise();
    fade(1);
}

void WaitingPanel::vanish() {
    fade(0);
}

void WaitingPanel::showStatus(const ExportStatus& status) {
    status_ = status;
    ring_->setProgress(static_cast<double>(status.progress));
    showWords();
}

void WaitingPanel::showWords() {
    const auto put = [](QLabel* label, const std::string& text) {
        const QString words = qtext(text);
        if (words == label->accessibleName())
            return;  // a name is announced each time it is set
        label->setText(words);
        label->setAccessibleName(words);
    };
    put(step_, stepText(status_, texts_));
    put(left_, leftText(status_.secondsLeft, texts_));
}

void WaitingPanel::fade(double to) {
    fading_->stop();
    fading_->setDuration(fadeTime);
    fading_->setStartValue(opacity_->opacity());
    fading_->setEndValue(to);
    fading_->start();
}

void WaitingPanel::center() {
    adjustSize();
    const auto room = parentWidget()->size() - size();
    move(room.width() / 2, room.height() / 2);
}

bool WaitingPanel::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::Resize && isVisible())
        center();
    return false;
}

void WaitingPanel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF card =
        QRectF(rect()).adjusted(shadowRadius, shadowRadius, -shadowRadius, -shadowRadius);
    // The shadow is drawn as many faint cards, each a little larger than the one before.
    QColor shadow = theme::veil;
    shadow.setAlphaF(static_cast<float>(1 - std::pow(1 - shadowOpacity, 1.0 / shadowRadius)));
    painter.setBrush(shadow);
    QPainterPath around;
    around.addRect(rect());
    around.addRoundedRect(card, corner, corner);
    painter.setClipPath(around);
    for (int spread = shadowRadius; spread > 0; --spread)
        painter.drawRoundedRect(card.adjusted(-spread, -spread, spread, spread), corner + spread,
                                corner + spread);
    painter.setClipping(false);
    painter.setBrush(theme::veil);
    painter.drawRoundedRect(card, corner, corner);
}

}  // namespace tembrix
