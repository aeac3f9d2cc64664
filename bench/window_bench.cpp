// SPDX-License-Identifier: MIT
// Sound by hand: the program on a screen of its own, a mouse that presses, and a private sound server whose microphone
// counts, so that a sample that is missing shows.
//
// half-minute  the longest take and its playback while the wheel zooms without pause and a loop keeps one core busy:
//              gaps, and the processor time of each thread that takes part
// cycles       takes of random length by press, hold and release, then as many playbacks by a press: what the process
//              has more of afterwards, what the sound server still holds for it
#include "bench/process_figures.h"
#include "tests/e2e/real_notes.h"
#include "tests/phonomark/audio/counted_sound.h"
#include "tools/soundcheck/note_stream.h"

#include <cstdio>
#include <random>

namespace {

using merix::test::comesTrue;
using merix::test::Note;
using merix::test::Running;

constexpr const char* kUsage = "usage: window_bench half-minute KIND\n"
                               "       window_bench cycles KIND COUNT\n"
                               "KIND: pulseaudio or pipewire\n";

/// Comes up first: it points the environment at its server.
struct Counting {
    explicit Counting(const std::string& kind)
        : microphone(kind, std::chrono::milliseconds(5)) {} // as often as one for speech
    CountingMicrophone microphone;
};

class WindowBench : Counting, public merix::test::RealNotes {
public:
    explicit WindowBench(const std::string& kind)
        : Counting(kind) {}

    bool halfMinute();
    bool cycles(int count);

private:
    void TestBody() override {}
    void startSound() override {}
    bool begin(const std::vector<Note>& notes) {
        SetUp();
        open(notes);
        m_figures = std::make_unique<bench::ProcessFigures>(std::to_string(merix->process().processId()));
        return !testing::Test::HasFailure();
    }
    std::string granted() const { return log.toStdString(); }
    /// The wheel goes to and fro over the note until `ended`.
    template <class Condition> int zoomUntil(Condition ended) {
        int turns = 0;
        QElapsedTimer bound;
        for (bound.start(); !ended() && bound.elapsed() < 60'000; turns += 40)
            hand({"click", "--repeat", "20", "--delay", "12", "4", "click", "--repeat", "20", "--delay", "12", "5"});
        return turns;
    }
    void goOverAndBack(const Note& note) {
        leaveNotes();
        if (!hover(note))
            std::printf("no window over the note %s\n", note.handle.constData());
    }

    std::unique_ptr<bench::ProcessFigures> m_figures;
    std::mt19937 m_random{1};
};

bool WindowBench::halfMinute() {
    const Note note{"A1", 400, 300};
    if (!begin({note}) || !hover(note))
        return false;
    const Running busy("sh", {"-c", "while :; do :; done"}, environment);
    QElapsedTimer clock;
    const auto report = [&](const char* what, int turns, const std::map<std::string, double>& before) {
        const double seconds = static_cast<double>(clock.elapsed()) / 1000;
        m_figures->printNewThreads(what, before, seconds);
        std::printf("%s: %.1f s, the wheel turned %d times\n", what, seconds, turns);
    };

    auto before = m_figures->threadTimes();
    press();
    clock.start();
    if (!comesTrue([&] { return isListening(); }))
        return false;
    // What the threads used is read while they are there.
    int turns = zoomUntil([&] { return clock.elapsed() > 28'000; });
    report("recording", turns, before);
    zoomUntil([&] { return !isListening(); });
    release();
    if (!save())
        return false;
    const auto kept = this->note(note.handle);
    QByteArray bytes;
    for (const auto& [code, value] : kept)
        bytes += code == 310 ? QByteArray::fromHex(value) : QByteArray();
    const auto samples =
        soundcheck::samplesOfNote({bytes.begin(), bytes.end()}, lastGranted(granted(), "capture").period);
    std::printf("the note: %.2f s, %d gaps, told as %s\n",
                static_cast<double>(samples.size()) / CountingMicrophone::kRate, gapsIn(samples),
                merix::test::value(kept, 3).constData());

    goOverAndBack(note);
    before = m_figures->threadTimes();
    press();
    clock.restart();
    release();
    if (!comesTrue([&] { return isPlaying(); }))
        return false;
    turns = zoomUntil([&] { return clock.elapsed() > 28'000; });
    report("playback", turns, before);
    zoomUntil([&] { return !isPlaying(); });
    QThread::msleep(1000); // the loudspeaker's end of the pipe
    const auto heard = heardBy(microphone.server);
    std::printf("heard: %.2f s, %d gaps\n", static_cast<double>(heard.size()) / CountingMicrophone::kRate,
                gapsIn(heard));
    return true;
}

bool WindowBench::cycles(int count) {
    constexpr int kFirst = 20, kColumns = 24, kSpacing = 40;
    std::vector<Note> notes;
    for (int i = 0; i < 240; ++i)
        notes.push_back({QByteArray::number(0x100 + i, 16).toUpper(), 40.0 + i % kColumns * kSpacing,
                         40.0 + i / kColumns * kSpacing});
    notes.back().seconds = 2; // heard below; it came with the drawing, so that no undo takes its sound away
    if (!begin(notes))
        return false;
    const auto refusals = [&] { return witness.timesSaid("not available") + witness.timesSaid("move off the note"); };
    int kept = 0, heard = 0;
    // A note that holds a take plays when it is pressed, so it is emptied again by undo.
    const auto takes = [&](int number) {
        for (int i = 0; i < number; ++i) {
            goOverAndBack(notes[m_random() % (notes.size() - 1)]);
            const int slips = witness.timesSaid(kTooShort);
            press();
            QThread::msleep(m_random() % 1400);
            release();
            comesTrue([&] { return !isListening(); });
            leaveNotes();
            if (witness.timesSaid(kTooShort) == slips) {
                command({"U"});
                ++kept;
            }
        }
    };
    const auto plays = [&](int number) {
        for (int i = 0; i < number; ++i) {
            goOverAndBack(notes.back());
            press();
            QThread::msleep(m_random() % 200);
            release();
            heard += comesTrue([&] { return isPlaying(); }, 2000) ? 1 : 0;
            if (m_random() % 4 == 0)
                comesTrue([&] { return !isPlaying(); });
        }
    };
    bool quiet = true;
    const auto report = [&](const char* when) {
        leaveNotes();
        quiet = comesTrue([&] { return !isListening() && !isPlaying(); }) && quiet;
        m_figures->printHoldings(when);
        std::fflush(stdout);
    };
    takes(kFirst);
    plays(kFirst);
    kept = heard = 0;
    report("at first");
    takes(count);
    report("after the takes");
    plays(count);
    report("after the playbacks");
    std::printf("%d takes, %d of them long enough to be kept; %d playbacks, %d of them heard; refused: %d; held by the "
                "server: %s\n",
                count, kept, count, heard, refusals(), quiet ? "nothing" : "a stream");
    return true;
}

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const std::vector<std::string> args(argv + 1, argv + argc);
    const bool isHalf = args.size() == 2 && args[0] == "half-minute",
               isCycles = args.size() == 3 && args[0] == "cycles";
    if (!isHalf && !isCycles) {
        std::fputs(kUsage, stderr);
        return 1;
    }
    WindowBench bench(args[1]);
    const bool done = isHalf ? bench.halfMinute() : bench.cycles(std::stoi(args[2]));
    if (!done)
        std::printf("not done: %s\n", qPrintable(bench.witness.said()));
    return done ? 0 : 1;
}
