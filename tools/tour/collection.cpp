// The user's own collection in addition to the standard ones.

#include <QApplication>
#include <QComboBox>

#include "core/collections/custom_collection_manager.h"
#include "core/collections/tag_library_manager.h"
#include "core/playback/video_player_manager.h"
#include "tour/stage.h"

namespace tembrix::tour {

namespace {

void saveTraining(CoreServices& core) {
    CustomCollectionManager collection(core.collections);
    collection.setCollectionName("Training");
    const auto groups = {collection.addTagGroup("Passing"), collection.addTagGroup("Pressing")};
    const char* const names[] = {"One touch", "Third man"};
    const char* const keys[] = {"⌃+⌥+K", "F6"};
    int place = 0;
    for (const auto& group : groups) {
        TagFormData form;
        form.name = names[place];
        form.hexColor = place == 0 ? "30D158" : "BF5AF2";
        form.hotkey = keys[place++];
        form.defaultTimeBefore = 2;
        form.defaultTimeAfter = 3;
        collection.addTag(form, group.id);
    }
    collection.addTimeEvent("First half");
    if (!collection.saveCollection())
        throw Failure("the collection could not be saved");
}

}  // namespace

void useOwnCollection(Stage& stage) {
    const Driver& driver = stage.driver;
    driver.say("An own collection appears in the tag panel, is chosen, marked with and deleted");
    saveTraining(stage.core());
    driver.activate("tagLibrary");
    auto* chooser = qobject_cast<QComboBox*>(driver.control("tagLibraryCollections"));
    driver.waitFor("the collection", [&] { return chooser->findText("Training") >= 0; });
    chooser->setFocus();
    driver.key(Qt::Key_Down);
    driver.waitFor("the list", [] { return QApplication::activePopupWidget() != nullptr; });
    driver.key(Qt::Key_End);
    driver.screen("choose-collection");
    driver.key(Qt::Key_Return);
    driver.waitFor("the switch", [&] {
        return stage.core().tagLibrary.currentCollectionType->name == "Training";
    });

    const std::size_t before = stage.stampCount();
    driver.key(Qt::Key_F6);
    driver.waitFor("the stamp", [&] { return stage.stampCount() == before + 1; });
    driver.screen("own-collection");
    driver.click("tagLibraryDeleteCollection");
    driver.picture("delete-collection", driver.control("confirmPanel"));
    driver.click("confirmButton");
    driver.waitGone("confirmPanel");
    driver.waitFor("the collection to go", [&] { return chooser->findText("Training") < 0; });
    if (stage.stampCount() != before + 1)
        throw Failure("a stamp went with its collection");
    driver.screen("collection-deleted");
    stage.project().player.pause();
}

}  // namespace tembrix::tour
