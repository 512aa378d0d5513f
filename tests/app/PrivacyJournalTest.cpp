#include "Curtain/PrivacyJournal.h"

#include "tests/support/FakeSessionNote.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using Curtain::PrivacyJournal;
using testing::Optional;

const PrivacyJournal::Entry full{
    {{"b", "a", "b", "line\nof two", "späť"}, {"a", "line\nof two"}, {{"a", false}, {"b", true}}},
    true,
    true};

struct PrivacyJournalTest : testing::Test {
    TestSupport::FakeSessionNote note;

    std::optional<PrivacyJournal::Entry> asTheNextRunReads() { return PrivacyJournal(note).earlier(); }
};

TEST_F(PrivacyJournalTest, TheNextRunReadsWhatWasWritten) {
    for (const auto& entry : {full, PrivacyJournal::Entry{}}) {
        PrivacyJournal(note).write(entry);
        EXPECT_THAT(asTheNextRunReads(), Optional(entry));
    }
}

TEST_F(PrivacyJournalTest, CountsTheStartsThatDidNotGetPastTakingItUp) {
    PrivacyJournal(note).write(full);
    for (int failures = 0; failures < 3; ++failures) {
        PrivacyJournal journal(note);
        EXPECT_EQ(journal.failedStarts(), failures);
        journal.willTakeUp();
        EXPECT_THAT(asTheNextRunReads(), Optional(full));
        journal.write(full);
    }
    PrivacyJournal journal(note);
    journal.willTakeUp();
    journal.didTakeUp();
    journal.write(full);
    EXPECT_EQ(PrivacyJournal(note).failedStarts(), 0);
}

TEST_F(PrivacyJournalTest, WhatIsSwitchedOffAndOnAgainHasNotFailed) {
    PrivacyJournal(note).write(full);
    PrivacyJournal journal(note);
    journal.willTakeUp();
    journal.clear();
    EXPECT_EQ(PrivacyJournal(note).failedStarts(), 0);
    journal.write(full);
    EXPECT_EQ(PrivacyJournal(note).failedStarts(), 0);
}

TEST_F(PrivacyJournalTest, NothingIsThereAtFirstAndOnceItIsCleared) {
    EXPECT_EQ(asTheNextRunReads(), std::nullopt);
    PrivacyJournal journal(note);
    journal.write(full);
    journal.clear();
    EXPECT_EQ(note.kept, std::nullopt);
    EXPECT_EQ(asTheNextRunReads(), std::nullopt);
}

TEST_F(PrivacyJournalTest, WhatHasNotChangedIsNotWrittenAgain) {
    int writes = 0;
    note.onKeep = [&] { ++writes; };
    PrivacyJournal journal(note);
    journal.write(full);
    journal.write(full);
    EXPECT_EQ(writes, 1);
    journal.clear();
    journal.write(full);
    EXPECT_EQ(writes, 3);
}

TEST_F(PrivacyJournalTest, BytesThatAreNoTextDoNotKeepItFromWriting) {
    PrivacyJournal(note).write({{{"\xff"}, {}, {}}, false, false});
    EXPECT_NE(asTheNextRunReads(), std::nullopt);
}

TEST_F(PrivacyJournalTest, NoHalfOfItIsBelieved) {
    PrivacyJournal(note).write(full);
    const auto whole = *note.kept;
    for (std::size_t length = 0; length < whole.size(); ++length) {
        note.kept = whole.substr(0, length);
        EXPECT_EQ(asTheNextRunReads(), std::nullopt) << *note.kept;
    }
}

TEST_F(PrivacyJournalTest, WhatHasAnotherShapeOrVersionIsNotBelieved) {
    PrivacyJournal(note).write(full);
    const auto whole = *note.kept;
    const auto withOther = [&](const std::string& part, const std::string& other) {
        auto text = whole;
        return text.replace(text.find(part), part.size(), other);
    };
    for (const auto& text :
         {withOther("\"version\": 1", "\"version\": 2"), withOther("\"version\": 1", "\"version\": \"1\""),
          withOther("\"targets\"", "\"others\""), withOther("\"a\": false", "\"a\": 0"),
          withOther("\"wasAutomatic\": true", "\"wasAutomatic\": {}"), withOther("\"isQuiet\"", "\"quiet\""),
          withOther("\"startsUnderWay\": 0", "\"startsUnderWay\": null"), std::string("[]"),
          std::string("null"), std::string("1")}) {
        note.kept = text;
        EXPECT_EQ(asTheNextRunReads(), std::nullopt) << text;
    }
}

} // namespace
