// The care of the full text index: verified, rebuilt, out of step.
#include <kxudm/UDMBulkEdit.h>
#include <kxudm/UDMMaintenance.h>
#include <kxudm/UDMProgress.h>

#include <map>
#include <random>

#include "FullText.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class FullTextCare : public FullText {
  protected:
    FullTextCare() {
        one = Publish(ann, Described("One", "forged bolt"));
        Put(CheckOut(ann, one), "deck.txt", "steel plate");
        ann->SetAttributeValue(Newest(ann, one), "description", "cast bolt");
        EXPECT_THAT(Hits("cast plate"), ElementsAre("One"));
    }

    // "<object>: <text>" of the findings of the full text index.
    Names Findings(bool contents = true) {
        UDMVerifyOptions options;
        options.contents = contents;
        Names texts;
        for (const UDMFinding& finding : UDMMaintenance(ann).Verify(options)) {
            EXPECT_EQ(finding.kind, UDMFindingKind::FullText);
            EXPECT_STREQ(UDMMaintenance::Name(finding.kind), "wrong full text");
            texts.push_back(finding.object + ": " + finding.text);
        }
        return texts;
    }
    void Rebuild() { UDMMaintenance(ann).RebuildFullText(); }

    UDMItemHandle one;
};

TEST_F(FullTextCare, FindsNothingWrongInASoundIndex) {
    EXPECT_THAT(Findings(), IsEmpty());
    Described("Two", "not indexed yet");
    EXPECT_THAT(Findings(), IsEmpty());
}

TEST_F(FullTextCare, TellsWordsThatARevisionDoesNotHave) {
    const std::string uid = one.GetUID().substr(0, one.GetUID().find(':'));
    Tamper("UPDATE text_attribute SET words = 'other' WHERE rowid = 2");
    EXPECT_THAT(Findings(),
                ElementsAre(uid + ": full text search finds it by other words than its published"
                                  " revision has; rebuild the full text index"));
    Rebuild();
    EXPECT_THAT(Findings(), IsEmpty());
    Tamper("DELETE FROM text_attribute WHERE rowid = 3");
    EXPECT_THAT(Findings(),
                ElementsAre(uid + ": full text search finds it by other words than its working"
                                  " revision has; rebuild the full text index"));
    Rebuild();
    EXPECT_THAT(Findings(), IsEmpty());
}

TEST_F(FullTextCare, IsLeftAloneWhereItsWordsAreNotAskedFor) {
    Tamper("UPDATE text_attribute SET words = 'other' WHERE rowid = 2");
    EXPECT_EQ(Findings().size(), 1U);
    EXPECT_THAT(UDMMaintenance(ann).Verify({.words = false}), IsEmpty());
}

TEST_F(FullTextCare, TellsWordsOfEntitiesThatAreNotThere) {
    Tamper("INSERT INTO text_attribute(rowid, words) VALUES (2000, 'ghost')");
    EXPECT_THAT(Findings(), ElementsAre(HasSubstr("#1000: ")));
    Rebuild();
    EXPECT_THAT(Findings(), IsEmpty());
}

TEST_F(FullTextCare, TellsContentsWithOtherWords) {
    Tamper(
        "INSERT INTO text_content(text_content, rowid, words) VALUES"
        " ('delete', 1, 'steel plate'); INSERT INTO text_content(rowid, words) VALUES (1, 'wood')");
    EXPECT_THAT(Findings(false), IsEmpty()) << "contents are not looked at";
    EXPECT_THAT(Findings(), ElementsAre(HasSubstr("has other words of it than it has")));
    Rebuild();
    EXPECT_THAT(Findings(), IsEmpty());
    EXPECT_THAT(Hits("plate"), ElementsAre("One"));
}

TEST_F(FullTextCare, TellsAContentInTwoVaultsOnce) {
    const std::string elsewhere = library.BaseDirectory() + "/elsewhere";
    const UDMItemHandle two = ann->CreateEntity("Part", "Two");
    ann->SetVault(two, elsewhere);
    Put(two, "copy.txt", "steel plate");
    EXPECT_THAT(Hits("plate"), ElementsAre("One", "Two"));
    EXPECT_THAT(Findings(), IsEmpty());
    Tamper("INSERT INTO text_content(text_content) VALUES ('delete-all')");
    EXPECT_THAT(Findings(), ElementsAre(HasSubstr("its words are missing")));
}

TEST_F(FullTextCare, TellsContentsWithoutWords) {
    Tamper("INSERT INTO text_content(text_content) VALUES ('delete-all')");
    EXPECT_THAT(Findings(false), ElementsAre(HasSubstr("its words are missing")));
    Rebuild();
    EXPECT_THAT(Findings(), IsEmpty());
}

TEST_F(FullTextCare, TellsContentsThatCouldNotBeRead) {
    Tamper("UPDATE file SET text = -1");
    EXPECT_THAT(Findings(), ElementsAre(HasSubstr("could not be read")));
    Rebuild();
    EXPECT_THAT(Findings(), IsEmpty());
    EXPECT_THAT(Hits("plate"), ElementsAre("One"));
}

TEST_F(FullTextCare, DoesNotMindWordsOfContentsThatNoFileHas) {
    ann->UndoCheckout(one);
    EXPECT_THAT(Findings(), IsEmpty());
    EXPECT_THAT(Hits("plate"), IsEmpty());
}

// Entities with generated words in attributes and files, published and in work.
class FullTextRebuild : public FullTextCare {
  protected:
    std::string Words(int count) {
        std::string words;
        for (int i = 0; i < count; ++i) {
            // Words of one letter and a number of steeply falling frequency.
            const auto rank = static_cast<int>(60 / (1 + random() % 60));
            words += std::string(1, static_cast<char>('a' + random() % 26)) + std::to_string(rank);
            words += random() % 3 == 0 ? ", " : " ";
        }
        return words;
    }
    void Fill() {
        for (int i = 0; i < 60; ++i) {
            const UDMItemHandle part = Described("P" + std::to_string(i), Words(5));
            if (i % 2 == 0) {
                Put(part, "deck.txt", "text " + Words(30));
            }
            if (i % 3 != 0) {
                Publish(ann, part);
            }
            if (i % 3 == 1) {
                ann->SetAttributeValue(CheckOut(ann, part), "description", Words(4));
            }
        }
    }
    // Hits of each word of the vocabulary, of prefixes and of pairs of words, for both users.
    std::map<std::string, Names> AllHits(const ProfilePtr& bob) {
        std::map<std::string, Names> hits;
        const auto ask = [&](const std::string& text, int mode) {
            hits["ann " + std::to_string(mode) + text] = Search(ann, text, mode);
            hits["bob " + std::to_string(mode) + text] = Search(bob, text, mode);
        };
        for (char letter = 'a'; letter <= 'z'; ++letter) {
            ask(letter + std::string("*"), ANY);
            for (const int rank : {1, 2, 3, 4, 5, 6, 10, 12, 15, 20, 30, 60}) {
                const std::string word = letter + std::to_string(rank);
                ask(word, ALL);
                ask(word + " a1", ALL);
                ask("text " + word, PHRASE);
            }
        }
        return hits;
    }

    std::mt19937 random{20260131};
};

TEST_F(FullTextRebuild, FindsTheSameAfterwards) {
    const ProfilePtr bob = library.Open("bob");
    Fill();
    const auto before = AllHits(bob);
    const auto found = std::count_if(
        before.begin(), before.end(), [](const auto& each) { return !each.second.empty(); });
    ASSERT_GT(found, 200);
    Rebuild();
    EXPECT_EQ(AllHits(bob), before);
    EXPECT_THAT(Findings(), IsEmpty());
}

TEST_F(FullTextRebuild, ThatWasCancelledIsDoneByTheNextSearch) {
    Fill();
    struct Listener : IUDMProgressListener {
        bool Advance(const UDMProgress& progress) override {
            told.push_back(progress.done);
            return false;
        }
        std::vector<std::size_t> told;
    } listener;
    {
        const UDMProgressScope scope(ann, listener);
        EXPECT_THAT(Refusal<UDMCancelledException>([&] { Rebuild(); }), HasSubstr("was cancelled"));
    }
    EXPECT_THAT(listener.told, ElementsAre(0U));
    EXPECT_GT(Pending(), 60);
    EXPECT_THAT(Hits("cast plate"), ElementsAre("One"));
    EXPECT_EQ(Pending(), 0);
}

TEST_F(FullTextCare, RebuildsNothingWithinABulkEdit) {
    const UDMBulkEdit bulk(ann);
    EXPECT_THAT(Refusal([&] { Rebuild(); }), HasSubstr("RebuildFullText"));
}

}  // namespace
}  // namespace kxudm::test
