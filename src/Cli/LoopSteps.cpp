#include "Cli/StepForms.h"
#include "Editor/AudioEditorModel/AudioEditorLoops.h"

namespace kiv::Cli {

namespace {

// Its control stands in the panel of Edit Loop, so that using it is to be there.
AudioEditorModel &inEditLoop(StepContext &context) {
    context.document.model().setEditLoopEnabled(true);
    return context.document.model();
}

void setLoop(StepContext &context, const Arguments &arguments) {
    const FrameRange loop{frame(context, arguments[0]), frame(context, arguments[1])};
    if (!loop.isEmpty()) AudioEditorLoops::setLoop(inEditLoop(context), loop.lo, loop.hi);
}

// The words may compare only once the rate is known: then the step does nothing, as one that cannot apply.
void checkAscending(const Arguments &arguments) {
    if (!Position::isBelow(arguments[0].position, arguments[1].position).value_or(true))
        throw WrongWords("LO must be below HI");
}

void nudgeLoop(StepContext &context, const Arguments &arguments) {
    const auto point = arguments[0].text == "start" ? AudioEditorLoops::LoopPoint::start : AudioEditorLoops::LoopPoint::end;
    AudioEditorLoops::nudgeLoop(inEditLoop(context), point, int(arguments[1].number));
}

void setLoopCrossfade(StepContext &context, const Arguments &arguments) {
    AudioEditorModel &model = inEditLoop(context);
    AudioEditorLoops::setLoopCrossfadeStep(model, int(arguments[0].number));
    AudioEditorLoops::setLoopCrossfadeEqualPower(model, arguments[1].text == "equalPower");
}

}  // namespace

std::vector<StepForm> loopSteps() {
    using enum ParameterKind;
    using Context = StepContext;
    constexpr double most = 1'000'000'000;
    const Parameter count{"N", wholeInRange, -most, most},
        step{"STEP", wholeInRange, 0, AudioEditorLoops::maxLoopCrossfadeStep};
    const Parameter point{"start|end", choice, 0, 0, "start end"}, onOff{"on|off", choice, 0, 0, "on off"};
    const Parameter curve{"equalGain|equalPower", choice, 0, 0, "equalGain equalPower"};
    // clang-format off
    return {
        {"loop", {{"LO", position}, {"HI", position}}, setLoop, checkAscending},
        {"loop", {{"none", choice, 0, 0, "none"}}, [](Context &c, const Arguments &) { inEditLoop(c).commitLoop(std::nullopt); }},
        {"loopZeroCrossing", {onOff},
         [](Context &c, const Arguments &a) { AudioEditorLoops::setLoopZeroCrossing(inEditLoop(c), a[0].text == "on"); }},
        {"nudgeLoop", {point, count}, nudgeLoop},
        {"stepLoopCandidate", {count},
         [](Context &c, const Arguments &a) { AudioEditorLoops::stepLoopCandidate(c.document.model(), int(a[0].number)); }},
        {"loopCrossfade", {step, curve}, setLoopCrossfade},
    };
    // clang-format on
}

}  // namespace kiv::Cli
