#pragma once

#include <cstddef>
#include <filesystem>

#include "base/date.h"

#include "ports/texts.h"

#include "app/widgets/sheet.h"
#include "core/keyboard/hot_key_manager.h"
#include "core/keyboard/text_focus.h"
#include "core/records/video_records.h"

class QCheckBox;
class QDateTimeEdit;

namespace tembrix {

class ElidedLabel;
class FocusAwareLineEdit;

// Asks for teams, score and date of a match before its video is added to the library, and shows
// the name that the match will have in the list.
class MatchSheet final : public Sheet {
    Q_OBJECT

  public:
    // `waiting`: how many videos are added after this one.
    MatchSheet(QWidget* parent, const Texts& texts, const Locale& locale, FocusStateManager& focus,
               const VideoMetadata& initial, const std::filesystem::path& file,
               std::size_t waiting);

    std::string team1() const;
    std::string team2() const;
    std::string score() const;
    Date date() const;
    bool underFileName() const;

  Q_SIGNALS:
    void addAllChosen();  // without further questions, under the names of the files

  private:
    FocusAwareLineEdit* addField(FocusStateManager& focus, const char* key, const char* prompt,
                                 const std::string& value);
    void showName();

    const Locale& locale_;
    const QString fileName_;
    FocusAwareLineEdit* team1_;
    FocusAwareLineEdit* team2_;
    FocusAwareLineEdit* score_;
    QDateTimeEdit* date_;
    QCheckBox* underFileName_;
    bool wantsFileName_ = false;  // the user's choice; without teams and score there is none
    ElidedLabel* name_;
    QLabel* note_;  // its date, or that nothing is entered
};

// Asks for a new name of a video.
class RenameSheet final : public Sheet {
    Q_OBJECT

  public:
    RenameSheet(QWidget* parent, const Texts& texts, FocusStateManager& focus,
                const std::string& name);
    std::string name() const;

  private:
    FocusAwareLineEdit* name_;
};

}  // namespace tembrix
