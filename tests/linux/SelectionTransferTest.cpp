#include "tests/linux/DropFixture.h"

#include "backends/linux/x11/SelectionTransfer.h"

namespace paneweld_tests {

using backends::SelectionTransfer;
using Manner = DragSource::Manner;
using Answer = platform::Result<std::string>;

class SelectionTransferTest : public DropTest {
protected:
    void open()
    {
        start();
        // Nobody needs to be dragged onto.
        target = nullptr;
        source->enter(window);
    }

    Answer ask(
        std::string const& type, std::size_t sizeLimit = 100, platform::Seconds patience = platform::Seconds { 5 })
    {
        SelectionTransfer::Question question;
        question.selection = source->atom("XdndSelection");
        question.type = source->atom(type);
        question.time = 17;
        question.sizeLimit = sizeLimit;
        question.patience = patience;
        std::optional<Answer> answer;
        SelectionTransfer const transfer(*connection, *loop, question, [&](Answer result) { answer.emplace(result); });
        EXPECT_FALSE(answer);
        pumpUntil([&] { return answer.has_value(); });
        return *answer;
    }
};

TEST_F(SelectionTransferTest, TakesWhatIsWithinTheLimitAndNothingElse)
{
    open();
    source->pieceSize = 30;
    for (auto const manner : { Manner::AtOnce, Manner::Incremental }) {
        source->manner = manner;
        source->offers = { { "TEXT", std::string(100, 'x') }, { "STRING", std::string(101, 'x') } };
        auto const within = ask("TEXT");
        ASSERT_TRUE(within);
        EXPECT_EQ(within.value(), std::string(100, 'x'));
        auto const beyond = ask("STRING");
        ASSERT_FALSE(beyond);
        EXPECT_EQ(beyond.error().code, SelectionTransfer::TooLarge);
    }
}

TEST_F(SelectionTransferTest, BelievesNoAnnouncement)
{
    open();
    source->pieceSize = 30;
    source->manner = Manner::Incremental;
    source->announcedSize = 1;
    source->offers = { { "STRING", std::string(1000, 'x') } };
    auto const answer = ask("STRING");
    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.error().code, SelectionTransfer::TooLarge);
    EXPECT_GT(source->piecesLeft(), 20u);
}

TEST_F(SelectionTransferTest, TakesNoFloodOfCrumbs)
{
    open();
    constexpr std::size_t size = 2'000'000;
    source->pieceSize = 1;
    source->manner = Manner::Incremental;
    source->offers = { { "STRING", std::string(size, 'x') } };
    auto const answer = ask("STRING", size, platform::Seconds { 0.5 });
    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.error().code, SelectionTransfer::TooSlow);
    EXPECT_GT(source->piecesLeft(), 0u);
}

TEST_F(SelectionTransferTest, AsksWithTheTimeOfItsCauseAndLeavesNoWindowBehind)
{
    open();
    settle();
    auto const before = source->children(source->root()).size();
    ASSERT_TRUE(ask("text/uri-list"));
    EXPECT_FALSE(ask("image/png"));
    EXPECT_EQ(source->requestTimes, (std::vector<xcb_timestamp_t> { 17, 17 }));
    settle();
    EXPECT_EQ(source->children(source->root()).size(), before);
}

} // namespace paneweld_tests
