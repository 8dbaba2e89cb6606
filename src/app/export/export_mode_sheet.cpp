#include "app/export/export_mode_sheet.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/theme/theme.h"
#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"

namespace tembrix {

ExportModeSelectionSheet::ExportModeSelectionSheet(QWidget* parent, const Texts& texts,
                                                   bool exportWithDrawings, bool drawingsOffered)
    : Sheet(parent, texts, "exportAs") {
    content()->addWidget(
        makeChoice(ExportMode::film, "exportModeFilm", "exportModeFilmHint", "video-x-generic"));
    content()->addWidget(makeChoice(ExportMode::playlist, "exportModePlaylist",
                                    "exportModePlaylistHint", "package-x-generic"));
    content()->addWidget(makeSeparator(Qt::Horizontal, this));

    auto* group = new QVBoxLayout;
    group->setSpacing(theme::unit);
    drawings_ = makeCheckBox(texts, "exportWithDrawings", this);
    drawings_->setChecked(exportWithDrawings && drawingsOffered);
    drawings_->setEnabled(drawingsOffered);
    const QString help = qtext(texts.text("exportWithDrawingsHelp"));
    drawings_->setToolTip(help);
    drawings_->setAccessibleDescription(help);
    group->addWidget(drawings_);
    group->addWidget(makeLabel(texts, "exportWithDrawingsHelp", LabelLook::caption, this));
    content()->addLayout(group);
    addCancelButton("collectionsButtonCancel");
}

QWidget* ExportModeSelectionSheet::makeChoice(ExportMode mode, std::string_view key,
                                              std::string_view hintKey, const char* icon) {
    auto* box = new QWidget(this);
    auto* column = new QVBoxLayout(box);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(theme::unit);
    auto* button = makeButton(texts(), key, ButtonLook::quiet, box);
    button->setIcon(theme::icon(icon));
    button->setMinimumHeight(theme::controlHeight + 2 * theme::unit);
    button->setAccessibleDescription(qtext(texts().text(hintKey)));
    connect(button, &QPushButton::clicked, this, [this, mode] {
        accept();
        onSelect(mode);
    });
    column->addWidget(button);
    column->addWidget(makeLabel(texts(), hintKey, LabelLook::caption, box));
    if (mode == ExportMode::film) {
        button->setDefault(true);
        button->setFocus();
    }
    return box;
}

bool ExportModeSelectionSheet::exportWithDrawings() const {
    return drawings_->isChecked();
}

}  // namespace tembrix
