#include "core/storage/data_layout.h"

#include <gtest/gtest.h>

namespace tembrix {
namespace {

// If a name changes, data stored under the old one is lost.
TEST(DataLayout, NamesOfStoredDataNeverChange) {
    EXPECT_EQ(layout::timelineKey("V"), "timeline_V");
    EXPECT_EQ(layout::collectionKey("C"), "collection_C");
    EXPECT_STREQ(layout::videosDataKey, "videosData");
    EXPECT_STREQ(layout::videosCleanupDoneKey, "videosDataDuplicationCleanupDone_v1");
    EXPECT_STREQ(layout::markupModeKey, "appMarkupMode");
    EXPECT_STREQ(layout::lastSelectedCollectionKey, "lastSelectedCollection");
    EXPECT_STREQ(layout::collectionsBookmarksKey, "collectionsBookmarks");
    EXPECT_STREQ(layout::savedCollectionsKey, "savedCollections");
    EXPECT_STREQ(layout::collectionsDeduplicatedKey, "collectionsDeduplicationDone");
    EXPECT_STREQ(layout::lastSyncDateKey, "DataSync_LastSyncDate");
    EXPECT_STREQ(layout::collectionIndexFile, "CollectionsBookmarks.json");
    EXPECT_STREQ(layout::defaultsBackupFile, "UserDefaultsBackup.plist");
}

}  // namespace
}  // namespace tembrix
