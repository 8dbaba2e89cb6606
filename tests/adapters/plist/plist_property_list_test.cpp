#include "adapters/plist/plist_property_list.h"

#include <gtest/gtest.h>

namespace tembrix {
namespace {

TEST(PlistPropertyList, GivesBackWhatItWrote) {
    const PlistPropertyList lists;
    const std::map<std::string, Bytes> values{
        {"videosData", toBytes("[1,2]")}, {"empty", {}}, {"все", Bytes{0, 255, 10, 0}}};
    const auto file = lists.encode(values);
    ASSERT_TRUE(file.ok());
    EXPECT_TRUE(asText(*file).starts_with("bplist00"));
    const auto read = lists.decode(*file);
    ASSERT_TRUE(read.ok());
    EXPECT_EQ(*read, values);
}

TEST(PlistPropertyList, RefusesWhatIsDamaged) {
    const PlistPropertyList lists;
    const auto file = lists.encode({{"videosData", Bytes(500, 7)}});
    for (const auto& broken :
         {Bytes{}, toBytes("<plist/>"), toBytes("bplist00"), toBytes("bplist00garbage"),
          Bytes(file->begin(), file->begin() + 100)})
        EXPECT_FALSE(lists.decode(broken).ok());
}

}  // namespace
}  // namespace tembrix
