// The sheets of the list window.
#include <QLabel>
#include <QVBoxLayout>
#include <filesystem>
#include <memory>
#include <optional>
#include <utility>

#include "base/file_url.h"
#include "base/shortened.h"

#include "ports/texts.h"

#include "app/library/match_sheet.h"
#include "app/library/videos_view.h"
#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/sheet.h"
#include "core/records/video_records.h"
#include "core/storage/video_files_manager.h"

namespace tembrix {

void VideosView::showSheets(const VideosState& state) {
    if (sheet_)
        return;
    if (state.showError)
        presentError(state);
    else if (state.showMetadataSheet)
        presentMatchSheet(state);
    else if (state.showRenameSheet)
        presentRenameSheet(state);
    else if (state.showRebindAlert)
        presentRebindAlert();
}

void VideosView::answer(VideosAction action) {
    // Observers of the action run before `sheet_` is cleared, so that no sheet opens while this one
    // is being answered.
    viewModel_.send(std::move(action));
    sheet_ = nullptr;
    showSheets(*viewModel_.state);
}

void VideosView::presentMatchSheet(const VideosState& state) {
    const VideoMetadata match = state.videoMetadata;
    std::optional<std::filesystem::path> file;
    if (match.urlString)
        file = pathOfFileUrl(*match.urlString);
    auto* sheet = new MatchSheet(this, services_.texts, services_.locale, services_.focus, match,
                                 file.value_or(std::filesystem::path()), state.waitingVideos);
    const auto all = std::make_shared<bool>(false);
    connect(sheet, &MatchSheet::addAllChosen, sheet, [all] { *all = true; });
    connect(sheet, &QDialog::finished, this, [this, sheet, file, all](int result) {
        if (*all)
            return answer(videos::AddWaitingVideos{});
        if (result != QDialog::Accepted)
            return answer(videos::CancelMetadata{});
        answer(videos::SaveVideoMetadata{file, sheet->team1(), sheet->team2(), sheet->score(),
                                         sheet->date(), sheet->underFileName()});
    });
    sheet_ = sheet;
    sheet->present();
}

void VideosView::presentRenameSheet(const VideosState& state) {
    auto* sheet = new RenameSheet(this, services_.texts, services_.focus, state.newFileName);
    connect(sheet, &QDialog::finished, this, [this, sheet, file = state.fileToRename](int result) {
        if (result == QDialog::Accepted && file)
            answer(videos::RenameSimpleVideo{*file, sheet->name()});
        else
            answer(videos::CancelRename{});
    });
    sheet_ = sheet;
    sheet->present();
}

void VideosView::presentDeletion(const FilesFile& file) {
    const std::string name = shortened(viewModel_.title(file).name);
    auto* sheet = new Sheet(this, services_.texts, "deleteVideoTitle");
    sheet->setTitle(qtext(services_.texts.format("deleteVideoTitle", {name})));
    auto* message = makeLabel(services_.texts, "deleteVideoMessage", LabelLook::secondary);
    message->setText(lossOf(file));
    message->setAccessibleName(message->text());
    sheet->content()->addWidget(message);
    sheet->addCancelButton("cancelButtonTitle");
    sheet->addAcceptButton("deleteButtonTitle", ButtonLook::destructive);
    connect(sheet, &QDialog::accepted, this,
            [this, file] { viewModel_.send(videos::DeleteFile{file}); });
    sheet->present();
}

QString VideosView::lossOf(const FilesFile& file) const {
    const Texts& texts = services_.texts;
    const MarkCounts marks = viewModel_.countMarks(file);
    const std::string stamps = texts.counted("countOfTags", marks.stamps);
    const std::string drawings = texts.counted("countOfDrawings", marks.drawings);
    std::string lost = texts.text("deleteVideoWithoutMarks");
    if (marks.stamps > 0 && marks.drawings > 0)
        lost = texts.format("deleteVideoWithBoth", {stamps, drawings});
    else if (marks.stamps > 0 || marks.drawings > 0)
        lost = texts.format("deleteVideoWith", {marks.stamps > 0 ? stamps : drawings});
    return qtext(lost + " " + texts.text("deleteVideoMessage"));
}

void VideosView::presentRebindAlert() {
    auto* sheet = new Sheet(this, services_.texts, "videoUnavailable");
    sheet->content()->addWidget(
        makeLabel(services_.texts, "videoUnavailableMessage", LabelLook::secondary));
    sheet->addCancelButton("cancelButtonTitle");
    sheet->addAcceptButton("selectNewVideo");
    connect(sheet, &QDialog::finished, this, [this](int result) {
        if (result == QDialog::Accepted)
            answer(videos::PickRebindFile{});
        else
            answer(videos::CancelRebind{});
    });
    sheet_ = sheet;
    sheet->present();
}

void VideosView::presentError(const VideosState& state) {
    auto* sheet = new Sheet(this, services_.texts, "alertsFileErrorTitle");
    sheet->setTitle(qtext(shortened(state.errorTitle)));
    if (!state.errorDetails.empty()) {
        auto* details = new QLabel(qtext(state.errorDetails));
        details->setTextFormat(Qt::PlainText);
        details->setWordWrap(true);
        nameControl(details, "errorDetails", details->text());
        setLook(details, LabelLook::secondary);
        sheet->content()->addWidget(details);
    }
    sheet->addAcceptButton("okButtonTitle");
    connect(sheet, &QDialog::finished, this, [this] { answer(videos::DismissError{}); });
    sheet_ = sheet;
    sheet->present();
}

}  // namespace tembrix
