// The speech voice's place on the air when nobody listens: the air is then
// only moved on, not rendered, and it must move exactly as far as rendering
// would have, clip by clip and frame by frame, or speech would end early or
// late against the transmitter in virtual time.
#include "platform/speech/speech_source.h"

#include <gtest/gtest.h>

#include <vector>

namespace mv {
namespace {

std::shared_ptr<SpeechClip> clipOf(int samples, bool done) {
    auto clip = std::make_shared<SpeechClip>("x", 1.0f);
    const std::vector<short> s(static_cast<size_t>(samples), 1000);
    clip->append(s.data(), samples);
    if (done) clip->finish();
    return clip;
}

TEST(SpeechSourceTest, MovingOnUnheardKeepsTheSameFramesAsRenderingThroughClipsStillGrowing) {
    // The same clips, one source rendered into a buffer and one only moved
    // on, in blocks of uneven sizes; the growing clip gets more samples, and
    // then its end, between blocks.
    for (const int firstLength : {1, 2, 7, 2205, 22050}) {
        SCOPED_TRACE(firstLength);
        SpeechSource heard, unheard;
        auto growingHeard = clipOf(100, false);
        auto growingUnheard = clipOf(100, false);
        for (SpeechSource* s : {&heard, &unheard}) s->enqueue(clipOf(firstLength, true));
        heard.enqueue(growingHeard);
        unheard.enqueue(growingUnheard);
        for (SpeechSource* s : {&heard, &unheard}) s->enqueue(clipOf(333, true));

        std::vector<float> buffer;
        const int64_t blocks[] = {1, 3, 47, 480, 1, 4800, 17, 96000};
        int step = 0;
        while (heard.audible() || unheard.audible()) {
            ASSERT_LT(step, 200) << "the clips never played out";
            const int64_t frames = blocks[step % 8];
            buffer.assign(static_cast<size_t>(frames * 2), 0.0f);
            heard.render(buffer.data(), frames);
            unheard.render(nullptr, frames);
            ASSERT_EQ(heard.playedFrames(), unheard.playedFrames()) << "block " << step;
            ASSERT_EQ(heard.audible(), unheard.audible()) << "block " << step;
            if (step == 4) {
                const std::vector<short> more(5000, 2000);
                growingHeard->append(more.data(), 5000);
                growingUnheard->append(more.data(), 5000);
            }
            if (step == 9) {
                growingHeard->finish();
                growingUnheard->finish();
            }
            ++step;
        }
        EXPECT_GT(step, 9);
    }
}

}  // namespace
}  // namespace mv
