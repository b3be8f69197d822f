// Target names to controllers. There is one controller a scenario in a process.
#pragma once

#include <memory>

#include "controller.h"

namespace sim {

struct Connection {
  std::shared_ptr<Controller> controller;
  Controller::Kernel kernel;
};

// The controller of a target name: a built-in scenario or the path of a scenario file, either with or
// without the suffix of a kernel; "#SEED" before that sets the seed. Switches it on at the first contact;
// throws a Failure when there is none.
Connection Connect(std::string_view target);

}  // namespace sim
