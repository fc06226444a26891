// Values, dictionaries and dates.

#include "NEBFoundation/NEBValue.h"

#include <gmock/gmock.h>

#include <memory>
#include <set>
#include <string_view>
#include <thread>
#include <vector>

#include "NEBFoundation/NEBDictionary.h"
#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb {
namespace {

using testing::ElementsAre;

NEBDate secondsSince1970(std::int64_t seconds) {
    return NEBDate(std::chrono::seconds(seconds));
}

class Thing : public NEBObject {
public:
    [[nodiscard]] std::string descriptionForAssertionMessage() const override { return "<Thing>"; }
};

TEST(Value, HasOneType) {
    const NEBValue value("topic");
    EXPECT_EQ(*value.string(), "topic");
    EXPECT_EQ(value.integer(), std::nullopt);
    EXPECT_FALSE(NEBValue().isPresent());

    EXPECT_EQ(NEBValue(true).boolean(), true);
    EXPECT_EQ(NEBValue(true).integer(), std::nullopt);
    EXPECT_EQ(NEBValue(5).integer(), 5);
    EXPECT_EQ(NEBValue(5).boolean(), std::nullopt);
    EXPECT_EQ(NEBValue(std::uint32_t{4096}).integer(), 4096);
    EXPECT_EQ(NEBValue("5").integer(), std::nullopt);
    EXPECT_EQ(NEBValue(secondsSince1970(7)).date(), secondsSince1970(7));
    EXPECT_EQ(NEBValue(LOMFilePath::filePathForPathString("/a")).filePath()->pathString(), "/a");
    EXPECT_EQ(NEBValue(LOMFilePath::filePathForPathString("/a")).string(), std::nullopt);
    EXPECT_EQ(NEBValue(NEBDictionary{}).dictionary()->size(), 0U);
    EXPECT_NE(NEBValue(std::make_shared<const Thing>()).object(), nullptr);
    EXPECT_FALSE(NEBValue(std::shared_ptr<const NEBObject>()).isPresent());
    EXPECT_TRUE(NEBValue("").isPresent()) << "empty is not absent";
}

TEST(Value, HoldsBytesThatAreNoString) {
    const NEBValue value = NEBValue::ofBytes(std::string_view("a\0\xe4", 3));
    EXPECT_EQ(value.bytes()->bytes(), std::string_view("a\0\xe4", 3));
    EXPECT_FALSE(value.isString());
    EXPECT_EQ(value.string(), std::nullopt);
    EXPECT_EQ(value.description(), std::string("a\0\xEF\xBF\xBD", 5));
    EXPECT_EQ(NEBValue(value), NEBValue::ofBytes(std::string_view("a\0\xe4", 3)));
    EXPECT_NE(value, NEBValue::ofBytes("a"));
    EXPECT_NE(NEBValue::ofBytes("a"), NEBValue("a"));
    EXPECT_TRUE(NEBValue::ofBytes({}).isPresent());
    EXPECT_EQ(NEBValue("a").bytes(), nullptr);
}

TEST(Value, HoldsAnArray) {
    const NEBValue value(std::vector<NEBValue>{"a", 2, NEBValue()});
    ASSERT_NE(value.array(), nullptr);
    EXPECT_EQ(value.array()->size(), 3U);
    EXPECT_EQ(value.array()->at(1), NEBValue(2));
    EXPECT_EQ(value.description(), "[a, 2, (null)]");
    EXPECT_EQ(NEBValue(value), NEBValue(std::vector<NEBValue>{"a", 2, NEBValue()}));
    EXPECT_NE(value, NEBValue(std::vector<NEBValue>{"a", 2}));
    EXPECT_NE(value, NEBValue("[a, 2, (null)]"));
    EXPECT_EQ(NEBValue("a").array(), nullptr);
    EXPECT_FALSE(NEBValue(std::vector<NEBValue>{}).boolValue());
}

/// A value stores a short text itself, a long one in a shared block, or refers to a substring of
/// Data. All behave the same.
TEST(Value, StoresATextOfAnyLength) {
    for (const std::size_t length :
         {0U, 1U, 12U, 13U, 14U, 15U, 255U, 256U, 65535U, 65536U, 1000000U}) {
        std::string text(length, 'x');
        if (length > 1) {
            text[1] = '\0';
            text.back() = 'e';
        }
        const NEBValue fromString{std::string(text)};
        const NEBValue fromView{std::string_view(text)};
        const Data around("[" + text + "]");
        const NEBValue piece(around, around.bytes().substr(1, length));
        EXPECT_EQ(piece.string(), text) << length;
        EXPECT_EQ(piece, fromView) << length;
        EXPECT_EQ(NEBValue(Data(text)), fromView) << length;
        EXPECT_NE(piece, NEBValue(around)) << length;
        EXPECT_TRUE(fromString.isString()) << length;
        EXPECT_EQ(fromString.string(), text) << length;
        EXPECT_EQ(fromView.string(), text) << length;
        EXPECT_EQ(fromString, fromView) << length;
        EXPECT_NE(fromString, NEBValue(text + "y")) << length;

        NEBValue copy = fromString;
        EXPECT_EQ(copy, fromView) << length;
        const NEBValue moved = std::move(copy);
        EXPECT_EQ(moved.string(), text) << length;

        NEBDictionary dictionary;
        dictionary.setWithSharedKey(fromView, 1);
        dictionary.set(text + "z", fromString);
        const NEBDictionary another = dictionary;
        dictionary.set(text, 2);
        EXPECT_EQ(another.value(text), NEBValue(1)) << length;
        EXPECT_EQ(dictionary.value(text), NEBValue(2)) << length;
        EXPECT_EQ(another.value(text + "z").string(), text) << length;
        dictionary.setWithSharedKey(piece, piece);
        EXPECT_EQ(dictionary.value(text).string(), text) << length;
        EXPECT_EQ(dictionary.size(), 2U) << length;
    }
}

TEST(Value, ASubstringOfDataSharesItsBytes) {
    for (const std::size_t length : {100U, 100000U}) {
        NEBValue value;
        const char* characters = nullptr;
        {
            const Data data(std::string(length, 'a') + std::string(length, 'b'));
            characters = data.bytes().data() + length;
            value = NEBValue(data, data.bytes().substr(length));
        }
        EXPECT_EQ(value.string()->data(), characters);
        EXPECT_EQ(NEBValue(value).string()->data(), characters);
        EXPECT_EQ(value.string(), std::string(length, 'b'));
    }
}

TEST(Value, ASubstringStaysValidWhileItsDataGrows) {
    GrowingData growing;
    const std::string start(100000, 's');
    start.copy(growing.roomFor(start.size()), start.size());
    growing.add(start.size());
    const NEBValue piece(growing.data(), growing.data().bytes().substr(10, 100));
    const NEBValue longPiece(growing.data(), growing.data().bytes().substr(10, 90000));
    for (int i = 0; i < 10; ++i) {
        const std::size_t more = growing.room() + 1;
        std::fill_n(growing.roomFor(more), more, 'm');
        growing.add(more);
        ASSERT_EQ(piece.string(), std::string(100, 's')) << i;
        ASSERT_EQ(longPiece.string(), std::string(90000, 's')) << i;
    }
    static_cast<void>(growing.take());
    EXPECT_EQ(piece.string(), std::string(100, 's'));
    EXPECT_EQ(longPiece.string(), std::string(90000, 's'));
}

TEST(Value, ParsesBooleans) {
    for (const NEBValue& value : {NEBValue(true), NEBValue(1), NEBValue(-1), NEBValue("YES"),
                                  NEBValue("true"), NEBValue(" +07"), NEBValue("T")}) {
        EXPECT_TRUE(value.boolValue()) << value.description();
    }
    for (const NEBValue& value : {NEBValue(), NEBValue(false), NEBValue(0), NEBValue(""),
                                  NEBValue("no"), NEBValue("000"), NEBValue("on")}) {
        EXPECT_FALSE(value.boolValue()) << value.description();
    }
}

TEST(Value, DescribesItself) {
    EXPECT_EQ(NEBValue().description(), "(null)");
    EXPECT_EQ(NEBValue("a").description(), "a");
    EXPECT_EQ(NEBValue("a").descriptionForAssertionMessage(), "\"a\"");
    EXPECT_EQ(NEBValue(25).descriptionForAssertionMessage(), "25");
    EXPECT_EQ(NEBValue(false).description(), "false");
    EXPECT_EQ(NEBValue(secondsSince1970(0)).description(), "1970-01-01T00:00:00Z");
    EXPECT_EQ(NEBValue(LOMFilePath::filePathForPathString("/a")).description(), "/a");
    EXPECT_EQ(NEBValue(std::make_shared<const Thing>()).description(), "<Thing>");
    EXPECT_EQ(NEBValue(NEBDictionary{{"a", 1}, {"b", "x"}}).description(), "{a = 1, b = x}");
}

TEST(Value, ComparesByContent) {
    EXPECT_EQ(NEBValue("a"), NEBValue(std::string("a")));
    EXPECT_FALSE(NEBValue(1) == NEBValue(true));
    EXPECT_EQ(NEBValue(NEBDictionary{{"a", 1}}), NEBValue(NEBDictionary{{"a", 1}}));
    EXPECT_FALSE(NEBValue(NEBDictionary{{"a", 1}}) == NEBValue(NEBDictionary{{"a", 2}}));
}

TEST(Date, HasAnISO8601Description) {
    EXPECT_EQ(textOfDate(secondsSince1970(1330837567)), "2012-03-04T05:06:07Z");
    EXPECT_EQ(textOfDate(secondsSince1970(-1)), "1969-12-31T23:59:59Z");
    EXPECT_EQ(textOfDate(secondsSince1970(951782400)), "2000-02-29T00:00:00Z");
    EXPECT_EQ(textOfDate(secondsSince1970(4107542400)), "2100-03-01T00:00:00Z");
    EXPECT_EQ(textOfDate(secondsSince1970(-62135596800)), "0001-01-01T00:00:00Z");
    EXPECT_EQ(textOfDate(secondsSince1970(253402300800)), "+10000-01-01T00:00:00Z");
    EXPECT_EQ(textOfDate(secondsSince1970(-62167219201)), "-0001-12-31T23:59:59Z");
    EXPECT_EQ(textOfDate(secondsSince1970(9223372036854775807)), "+292277026596-12-04T15:30:07Z");
}

// ---- dictionaries -----------------------------------------------------------------------------

std::vector<std::string> keysOf(const NEBDictionary& dictionary) {
    std::vector<std::string> keys;
    for (const NEBDictionary::Entry& entry : dictionary) {
        keys.emplace_back(entry.key());
    }
    return keys;
}

TEST(Dictionary, ReturnsWhatWasSet) {
    NEBDictionary record;
    record.set(NEBSourceControlOperationPathKey, "/w/a.txt");
    EXPECT_EQ(*record.value(NEBSourceControlOperationPathKey).string(), "/w/a.txt");
    EXPECT_FALSE(record.value("no such key").isPresent());
    EXPECT_TRUE(record.contains("NEBSourceControlOperationPathKey"));
    EXPECT_FALSE(record.contains(""));
}

TEST(Dictionary, KeepsTheOrderOfInsertion) {
    NEBDictionary dictionary{{"z", 1}, {"a", 2}};
    dictionary.set("m", 3);
    dictionary.set("z", 4);
    EXPECT_THAT(keysOf(dictionary), ElementsAre("z", "a", "m"));
    EXPECT_EQ(dictionary.value("z").integer(), 4);
}

TEST(Dictionary, AnAbsentValueChangesNothing) {
    NEBDictionary dictionary{{"a", 1}};
    dictionary.set("a", NEBValue());
    dictionary.set("b", NEBValue());
    EXPECT_EQ(dictionary, (NEBDictionary{{"a", 1}}));
}

TEST(Dictionary, CopiesAreIndependentAtAnySize) {
    for (const int size : {3, 16, 17, 2000}) {
        NEBDictionary original;
        for (int i = 0; i < size; ++i) {
            original.set("key number " + std::to_string(i), i);
        }
        NEBDictionary copy = original;
        original = NEBDictionary();
        for (int i = 0; i < size; ++i) {
            ASSERT_EQ(copy.value("key number " + std::to_string(i)).integer(), i);
        }
        copy.set("key number 1", "changed");
        EXPECT_EQ(copy.size(), static_cast<std::size_t>(size));
        NEBDictionary moved = std::move(copy);
        EXPECT_EQ(*moved.value("key number 1").string(), "changed");
        moved.set("one more", 1);
        EXPECT_TRUE(moved.contains("one more"));
        moved = NEBDictionary(moved);
        EXPECT_TRUE(moved.contains("one more"));
    }
}

TEST(Dictionary, TakesTheEntriesOfAnother) {
    NEBDictionary dictionary{{"a", 1}, {"b", 2}};
    dictionary.addEntriesFrom(NEBDictionary{{"b", 3}, {"c", 4}});
    EXPECT_EQ(dictionary, (NEBDictionary{{"a", 1}, {"b", 3}, {"c", 4}}));
    EXPECT_FALSE(dictionary == (NEBDictionary{{"a", 1}, {"b", 3}}));
}

TEST(Value, CopiesShareTheirContentAndOutliveEachOther) {
    const std::string path(100, 'p');
    const Data data("a piece that is too long to be kept in place");
    const NEBValue values[] = {NEBValue("a text that is too long to be kept in place"),
                               NEBValue(data),
                               NEBValue(LOMFilePath::filePathForPathString(path)),
                               NEBValue(NEBDictionary{{"key", "value"}}),
                               NEBValue(5),
                               NEBValue(true),
                               NEBValue()};
    for (const NEBValue& value : values) {
        auto first = std::make_unique<NEBValue>(value);
        NEBValue second = *first;
        EXPECT_EQ(second.string(), first->string()) << "the same object";
        first.reset();
        EXPECT_EQ(second, value);
        NEBValue third = std::move(second);
        EXPECT_EQ(third, value);
        const NEBValue& itself = third;
        third = itself;
        EXPECT_EQ(third, value);
        for (const NEBValue& other : values) {
            third = other;
            EXPECT_EQ(third, other);
            EXPECT_EQ(third == value, &other == &value);
        }
    }
}

TEST(Value, MayBeSharedByThreads) {
    const NEBValue value("a text that is too long to be kept in place");
    const NEBValue piece(Data("a piece that is too long to be kept in place"));
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([value, piece] {
            for (int round = 0; round < 10000; ++round) {
                const NEBValue copy = value;
                const NEBValue copyOfPiece = piece;
                ASSERT_TRUE(copy.isString());
                ASSERT_EQ(copyOfPiece.string()->substr(0, 7), "a piece");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(Dictionary, SharesAKeyWithAValue) {
    NEBDictionary dictionary;
    {
        const NEBValue key("a key that is too long to be kept in place");
        dictionary.setWithSharedKey(key, 1);
        EXPECT_EQ(dictionary.begin()->key().data(), key.string()->data());
    }
    dictionary.setWithSharedKey(NEBValue(5), 2);
    dictionary.setWithSharedKey(NEBValue(), 3);
    EXPECT_EQ(dictionary, (NEBDictionary{{"a key that is too long to be kept in place", 1}}));
}

TEST(Dictionary, AcceptsAnyTextAsAKey) {
    const std::string withNUL("a\0b", 3);
    NEBDictionary dictionary{{withNUL, 1}, {"", 2}, {"a", 3}};
    dictionary.set(NEBSourceControlErrorDomain, 4);
    dictionary.set(std::string(NEBSourceControlErrorDomain.text()), 5);
    EXPECT_EQ(dictionary.size(), 4U) << "a constant and its text are the same key";
    EXPECT_EQ(dictionary.value(withNUL).integer(), 1);
    EXPECT_EQ(dictionary.value("").integer(), 2);
    EXPECT_EQ(dictionary.value("a").integer(), 3);
    EXPECT_EQ(dictionary.value(NEBSourceControlErrorDomain).integer(), 5);
}

TEST(Dictionary, EntriesAreValues) {
    NEBDictionary::Entry first("own key, too long to be kept in place", "one");
    NEBDictionary::Entry second(NEBSourceControlErrorDomain, "two");
    NEBDictionary::Entry copy = first;
    first = second;
    EXPECT_EQ(first.key(), NEBSourceControlErrorDomain);
    EXPECT_EQ(first.value(), NEBValue("two"));
    second = copy;
    EXPECT_EQ(second.key(), "own key, too long to be kept in place");
    copy = std::move(first);
    EXPECT_EQ(copy.key(), NEBSourceControlErrorDomain);
    std::swap(copy, second);
    EXPECT_EQ(second.value(), NEBValue("two"));
    EXPECT_EQ(copy.value(), NEBValue("one"));
}

TEST(Constants, HaveTheirOwnIdentifierAsText) {
    EXPECT_EQ(NEBSourceControlHEADRevisionName, "NEBSourceControlHEADRevisionName");
    EXPECT_EQ(NEBSourceControlBASERevisionName, "NEBSourceControlBASERevisionName");
    EXPECT_EQ(NEBSourceControlInMemoryRevisionName, "NEBSourceControlInMemoryRevisionName");
    EXPECT_EQ(NEBSourceControlLocalRevisionName, "NEBSourceControlLocalRevisionName");
    EXPECT_EQ(NEBSourceControlErrorDomain, "NEBSourceControlErrorDomain");
    EXPECT_EQ(NEBSourceControlOperationWCStatusKey, "NEBSourceControlOperationWCStatusKey");
    std::set<std::string_view> options;
    for (const NEBConstant option : NEBSourceControlAllRequestOptions) {
        EXPECT_TRUE(option.text().starts_with("NEBSourceControlRequestOption")) << option.text();
        EXPECT_TRUE(options.insert(option.text()).second) << option.text();
    }
}

}  // namespace
}  // namespace neb
