#include "gate.h"

#include <exception>
#include <new>

#include "text.h"

namespace cli {

int RunGate(const std::function<int()>& judge) {
  try {
    return judge();
  } catch (const ClosedPipe&) {
    // The verdict was not read to its end.
  } catch (const std::bad_alloc&) {
    PrintError("Out of memory");
  } catch (const Failure& failure) {
    PrintError(failure.what());
  } catch (const UsageError& error) {
    PrintError(error.what());
  } catch (const std::exception& error) {
    PrintError(SafeText(error.what()));
  }
  return exitUntold;
}

}  // namespace cli
