// Reads a TaskLog file and prints how often each task was switched in.
#include <iostream>
#include <tasklog/tasklog.hpp>

int main(int argc, char** argv) {
  tasklog::Log log;
  const tasklog::Status status = log.AppendFromFile(argc > 1 ? argv[1] : "machine.tasklog");
  if (!status) return std::cerr << status.Text() << '\n', 1;

  for (const auto task : log.Categories({.types = TL_CATS_TASKS})) {
    int switches = 0;
    for (const auto entry : log.Entries({.category = task, .types = TL_LOGS_SWITCHES}))
      if (entry.Subject() == task) ++switches;
    std::cout << task.Name() << ": " << switches << '\n';
  }
}
