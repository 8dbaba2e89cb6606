#include "app/settings/settings_view.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QScrollArea>
#include <QStackedWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <utility>

#include "app/settings/keys_page.h"
#include "app/settings/settings_pages.h"
#include "app/theme/theme.h"
#include "app/widgets/accessible.h"
#include "app/widgets/controls.h"
#include "app/widgets/translated.h"
#include "core/commands/command_keys.h"
#include "core/commands/commands.h"
#include "core/settings/settings.h"

namespace tembrix {

namespace {

constexpr int namesWidth = 190;
constexpr int pageEdge = 2 * theme::margin;

}  // namespace

SettingsView::SettingsView(const SettingsServices& services, QWidget* parent)
    : QWidget(parent),
      services_(services),
      names_(new QListWidget(this)),
      pages_(new QStackedWidget(this)) {
    nameControl(this, services.texts, "settings");
    nameControl(names_, services.texts, "settingsPages");
    tellRows(names_);
    names_->setFixedWidth(namesWidth);
    names_->setFrameShape(QFrame::NoFrame);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(names_);
    row->addWidget(makeSeparator(Qt::Vertical, this));
    row->addWidget(pages_, 1);

    Settings& settings = services.settings;
    const auto reset = [&settings](SettingsPage page) {
        return [&settings, page] { settings.reset(page); };
    };
    addPage("settingsGeneral", makeGeneralPage(services_, this), reset(SettingsPage::general));
    addPage("settingsPlayback", makePlaybackPage(services_, this), reset(SettingsPage::playback));
    addPage("settingsFiles", makeFilesPage(services_, this), reset(SettingsPage::files));
    addPage("settingsKeys", new KeysPage(services_, this),
            [&keys = services.commands.keys()] { keys.resetAll(); });
    connect(names_, &QListWidget::currentRowChanged, pages_, &QStackedWidget::setCurrentIndex);
    names_->setCurrentRow(0);
}

void SettingsView::addPage(const char* titleKey, QWidget* page, std::function<void()> reset) {
    auto* item = new QListWidgetItem(names_);
    followLanguage(page, services_.texts, [&texts = services_.texts, item, titleKey] {
        item->setText(qtext(texts.text(titleKey)));
    });
    auto* whole = new QWidget;
    auto* column = new QVBoxLayout(whole);
    column->setContentsMargins(pageEdge, pageEdge, pageEdge, theme::margin);
    column->setSpacing(theme::margin);
    column->addWidget(makeLabel(services_.texts, titleKey, LabelLook::title, whole));
    column->addWidget(page, 1);
    auto* bottom = new QHBoxLayout;
    auto* defaults = makeButton(services_.texts, "settingsReset", ButtonLook::quiet, whole);
    defaults->setObjectName(QStringLiteral("settingsReset.%1").arg(titleKey));
    connect(defaults, &QPushButton::clicked, this, [reset = std::move(reset)] { reset(); });
    bottom->addWidget(defaults);
    bottom->addStretch(1);
    column->addLayout(bottom);

    auto* scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setWidget(whole);
    pages_->addWidget(scroll);
}

void SettingsView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!event->spontaneous())
        names_->setFocus();
}

void SettingsView::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Escape)
        return QWidget::keyPressEvent(event);
    // Closing destroys this view, which is handling an event.
    QTimer::singleShot(0, window(), &QWidget::close);
}

}  // namespace tembrix
