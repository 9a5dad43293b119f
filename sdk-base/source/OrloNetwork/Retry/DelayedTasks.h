#pragma once

#include <BaseCommon/Interruption.h>

#include <chrono>
#include <functional>
#include <memory>

namespace orlo::http {

/// Runs a task after a pause, without holding a worker meanwhile: many chains may wait at once. All pauses share one thread, which
/// ends as soon as none is left. Tasks must be short; what they throw is dropped. A task that is still waiting when the
/// process exits never runs, unless somebody waits for it: with the interruption of awaited work. Every interruption ends the pause early.
/// Throws std::system_error if the thread can't be made; the task is dropped then.
void runAfter(std::chrono::milliseconds pause, std::function<void()> task, const std::shared_ptr<Interruption>& interruption = nullptr);

} // namespace orlo::http
