#include "app/export/saved_product_bar.h"

#include <QPointer>
#include <QPushButton>
#include <string>
#include <system_error>
#include <utility>

#include "base/file_url.h"
#include "base/files.h"
#include "base/shortened.h"
#include "base/utf8_text.h"

#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"

namespace tembrix {

SavedProductBar::SavedProductBar(const UnsavedProducts& products, Panels& panels,
                                 const Texts& texts, std::string window, QWidget* host)
    : LowerBar(texts, "savedProduct", "savedProductHide", host),
      panels_(panels),
      texts_(texts),
      window_(std::move(window)),
      play_(makeButton(texts, "savedProductPlay", ButtonLook::accented, this)) {
    auto* folder = makeButton(texts, "savedProductFolder", ButtonLook::quiet, this);
    addButton(play_);
    addButton(folder);
    connect(play_, &QPushButton::clicked, this, [this] { open(false); });
    connect(folder, &QPushButton::clicked, this, [this] { open(true); });
    saved_ = products.saved.observe([this](const std::optional<SavedProduct>& product) {
        if (product && product->window == window_)
            showSaved(*product);
    });
}

void SavedProductBar::showSaved(const SavedProduct& product) {
    file_ = product.file;
    play_->setVisible(file_.extension() != ".zip");
    sayName("savedProduct");
    place();
}

void SavedProductBar::open(bool folder) {
    std::error_code ignored;
    if (!std::filesystem::exists(file_, ignored))
        return sayName("savedProductGone");
    const auto failed = [self = QPointer(this), folder] {
        if (self)
            self->sayName(folder ? "savedProductFolderFailed" : "savedProductPlayFailed");
    };
    if (folder)
        panels_.reveal(file_.parent_path(), failed);
    else
        panels_.browse(fileUrl(file_), failed);
}

void SavedProductBar::sayName(std::string_view key) {
    say([this, key = std::string(key),
         name = shortened(sanitizedUtf8(pathText(file_.filename())))] {
        return qtext(texts_.format(key, {name}));
    });
}

}  // namespace tembrix
