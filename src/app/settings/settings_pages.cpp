#include "app/settings/settings_pages.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>
#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <vector>

#include "base/files.h"

#include "ports/panels.h"
#include "ports/texts.h"

#include "app/settings/settings_form.h"
#include "app/theme/theme.h"
#include "app/widgets/controls.h"
#include "app/widgets/elided_label.h"
#include "app/widgets/text_focus.h"
#include "app/widgets/translated.h"
#include "core/settings/settings.h"
#include "core/settings/settings_checks.h"

namespace tembrix {

namespace {

constexpr int choiceWidth = 220;
constexpr int numberWidth = 110;
constexpr std::array scales{75, 90, 100, 110, 125, 150, 175, 200};  // percent

// A page that shows the settings, now and after each change of them or of the language.
class Page {
  public:
    Page(const SettingsServices& services, QWidget* parent)
        : services_(services), form_(new SettingsForm(services.texts, parent)) {}

    SettingsForm* form() const { return form_; }

    template <class Control>
    void follow(Control* control, std::function<void(const SettingsValues&)> show) {
        const auto now = [&settings = services_.settings, control, show = std::move(show)] {
            const QSignalBlocker quiet(control);
            show(*settings.values);
        };
        followLanguage(control, services_.texts, now);
        auto subscription = std::make_shared<Subscription>(
            services_.settings.values.observe([now](const SettingsValues&) { now(); }));
        QObject::connect(control, &QObject::destroyed, [subscription] { subscription->reset(); });
    }

    void addCheck(const char* key, bool SettingsValues::*member, const char* hintKey = "") {
        auto* box = makeCheckBox(services_.texts, key, form_);
        QObject::connect(box, &QCheckBox::toggled, box,
                         [&settings = services_.settings, member](bool on) {
                             settings.change([&](SettingsValues& values) { values.*member = on; });
                         });
        follow(box,
               [box, member](const SettingsValues& values) { box->setChecked(values.*member); });
        form_->addCheck(box, hintKey);
    }

    void addSeconds(const char* key, double SettingsValues::*member, const char* hintKey = "") {
        auto* field = new QDoubleSpinBox(form_);
        field->setDecimals(1);
        field->setRange(leastSeekStep, mostSeekStep);
        field->setFixedWidth(numberWidth);
        QObject::connect(
            field, &QDoubleSpinBox::valueChanged, field,
            [&settings = services_.settings, member](double value) {
                settings.change([&](SettingsValues& values) { values.*member = value; });
            });
        follow(field, [field, member, &texts = services_.texts](const SettingsValues& values) {
            field->setLocale(QLocale());
            field->setSuffix(" " + qtext(texts.text("secondsUnit")));
            field->setValue(values.*member);
        });
        form_->addRow(key, field, hintKey);
    }

    void addAddress(const char* key, std::string SettingsValues::*member, const char* hintKey) {
        auto* field = new FocusAwareLineEdit(services_.focus, form_);
        field->setPlaceholderText("https://");
        form_->addRow(key, field, hintKey);
        auto* warning = form_->addWarning(std::string(key) + ".fault");
        const auto check = [&texts = services_.texts, field, warning] {
            const char* fault = addressFault(utf8Text(field->text()));
            showWarning(warning, fault ? qtext(texts.text(fault)) : QString());
        };
        QObject::connect(
            field, &QLineEdit::textEdited, field,
            [&settings = services_.settings, member, check](const QString& text) {
                check();
                const std::string address = utf8Text(text);
                if (!addressFault(address))
                    settings.change([&](SettingsValues& values) { values.*member = address; });
            });
        follow(field, [field, member, check](const SettingsValues& values) {
            // What is being typed stays, also while it is no address yet.
            if (!field->hasFocus() || !addressFault(utf8Text(field->text())))
                if (const QString stored = qtext(values.*member); stored != field->text())
                    field->setText(stored);
            check();
        });
    }

  private:
    const SettingsServices& services_;
    SettingsForm* form_;
};

void addLanguage(Page& page, const SettingsServices& services) {
    static constexpr std::array languages{"", "en", "ru"};
    static constexpr std::array keys{"settingsLanguageSystem", "settingsLanguageEnglish",
                                     "settingsLanguageRussian"};
    auto* choice = new QComboBox(page.form());
    choice->setFixedWidth(choiceWidth);
    for (std::size_t i = 0; i < languages.size(); ++i)
        choice->addItem(QString(), languages[i]);
    QObject::connect(choice, &QComboBox::activated, choice,
                     [choice, &settings = services.settings](int index) {
                         settings.change([&](SettingsValues& values) {
                             values.language = utf8Text(choice->itemData(index).toString());
                         });
                     });
    page.follow(choice, [choice, &texts = services.texts](const SettingsValues& values) {
        for (std::size_t i = 0; i < keys.size(); ++i)
            choice->setItemText(static_cast<int>(i), qtext(texts.text(keys[i])));
        choice->setCurrentIndex(std::max(choice->findData(qtext(values.language)), 0));
    });
    page.form()->addRow("settingsLanguage", choice, "settingsLanguageHint");
}

void addScale(Page& page, const SettingsServices& services) {
    auto* choice = new QComboBox(page.form());
    choice->setFixedWidth(choiceWidth);
    for (const int scale : scales)
        choice->addItem(QString::number(scale) + " %", scale);
    QObject::connect(choice, &QComboBox::activated, choice,
                     [choice, &settings = services.settings](int index) {
                         settings.change([&](SettingsValues& values) {
                             values.interfaceScale = choice->itemData(index).toInt();
                         });
                     });
    page.follow(choice, [choice](const SettingsValues& values) {
        int index = choice->findData(values.interfaceScale);
        if (index < 0) {
            choice->addItem(QString::number(values.interfaceScale) + " %", values.interfaceScale);
            index = choice->count() - 1;
        }
        choice->setCurrentIndex(index);
    });
    page.form()->addRow("settingsScale", choice, "settingsScaleHint");
}

void addVolume(Page& page, const SettingsServices& services) {
    auto* row = new QWidget(page.form());
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(theme::spacing);
    auto* slider = new QSlider(Qt::Horizontal, row);
    slider->setRange(0, 100);
    slider->setPageStep(10);
    slider->setFixedWidth(choiceWidth);
    slider->setMinimumHeight(theme::controlHeight);
    auto* figure = new QLabel(row);
    layout->addWidget(slider);
    layout->addWidget(figure);
    layout->addStretch(1);
    QObject::connect(slider, &QSlider::valueChanged, slider,
                     [&settings = services.settings](int value) {
                         settings.change([&](SettingsValues& values) { values.volume = value; });
                     });
    page.follow(slider, [slider, figure](const SettingsValues& values) {
        slider->setValue(values.volume);
        figure->setText(QString::number(values.volume) + " %");
    });
    page.form()->addRow("settingsVolume", row);
    row->setObjectName("settingsVolume.row");
    row->setAccessibleName(QString());
    nameControl(slider, services.texts, "settingsVolume");
}

void addExportFolder(Page& page, const SettingsServices& services) {
    auto* row = new QWidget(page.form());
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(theme::spacing);
    auto* shown = new ElidedLabel({}, row);
    shown->setObjectName("settingsExportFolder.shown");
    auto* choose = makeButton(services.texts, "settingsChooseFolder", ButtonLook::quiet, row);
    auto* clear = makeButton(services.texts, "settingsClearFolder", ButtonLook::quiet, row);
    layout->addWidget(shown, 1);
    layout->addWidget(choose);
    layout->addWidget(clear);
    page.form()->addRow("settingsExportFolder", row, "settingsExportFolderHint");
    auto* warning = page.form()->addWarning("settingsExportFolder.fault");

    const auto store = [&settings = services.settings](const std::string& folder) {
        settings.change([&](SettingsValues& values) { values.exportFolder = folder; });
    };
    QObject::connect(clear, &QPushButton::clicked, row, [store] { store({}); });
    const QPointer<QWidget> self(row);
    QObject::connect(choose, &QPushButton::clicked, row, [&services, store, self] {
        OpenPanelRequest request;
        request.title = services.texts.text("settingsExportFolder");
        request.folders = true;
        services.panels.open(request, [store, self](std::vector<std::filesystem::path> chosen) {
            if (self && !chosen.empty())
                store(pathText(chosen.front()));
        });
    });
    page.follow(row, [shown, clear, warning, &texts = services.texts](const SettingsValues& v) {
        const bool none = v.exportFolder.empty();
        shown->setFullText(none ? qtext(texts.text("settingsNoFolder")) : qtext(v.exportFolder));
        setLook(shown, none ? LabelLook::secondary : LabelLook::body);
        clear->setEnabled(!none);
        const char* fault = none ? nullptr : folderFault(pathFromText(v.exportFolder));
        showWarning(warning, fault ? qtext(texts.text(fault)) : QString());
    });
}

}  // namespace

QWidget* makeGeneralPage(const SettingsServices& services, QWidget* parent) {
    Page page(services, parent);
    addLanguage(page, services);
    addScale(page, services);
    page.addCheck("settingsCompactTags", &SettingsValues::compactTags, "settingsCompactTagsHint");
    return page.form();
}

QWidget* makePlaybackPage(const SettingsServices& services, QWidget* parent) {
    Page page(services, parent);
    page.addCheck("settingsPlaysOnOpening", &SettingsValues::playsOnOpening,
                  "settingsPlaysOnOpeningHint");
    page.addSeconds("settingsKeySeekStep", &SettingsValues::keySeekStep);
    page.addSeconds("settingsSmallSeekStep", &SettingsValues::smallSeekStep);
    page.addSeconds("settingsLargeSeekStep", &SettingsValues::largeSeekStep,
                    "settingsSeekStepsHint");
    addVolume(page, services);
    page.addCheck("settingsMuted", &SettingsValues::muted);
    return page.form();
}

QWidget* makeFilesPage(const SettingsServices& services, QWidget* parent) {
    Page page(services, parent);
    addExportFolder(page, services);
    page.addAddress("settingsReportServer", &SettingsValues::reportServer,
                    "settingsReportServerHint");
    page.addAddress("settingsDownloadServer", &SettingsValues::downloadServer,
                    "settingsDownloadServerHint");
    return page.form();
}

}  // namespace tembrix
