// Failure.cpp - turns failures and exceptions into ZorError values.
#include "files/Failure.h"

#include <new>

ZorError ZorErrorFromException(const CException& exception) {
  const auto* file = dynamic_cast<const CFileException*>(&exception);
  const bool full = file != nullptr && file->m_cause == CFileException::diskFull;
  return full ? ZorErrorDiskFull : ZorErrorFileFailure;
}

ZorOutcome ZorGuard(const std::function<void()>& step) {
  ZorOutcome outcome;
  try {
    step();
    outcome.complete = true;
  } catch (const ZorStopped&) {
  } catch (const ZorFailure& failure) {
    outcome.error = failure.error;
  } catch (CException* exception) {  // NOLINT(misc-throw-by-value-catch-by-reference)
    outcome.error = ZorErrorFromException(*exception);
    exception->Delete();
  } catch (const std::bad_alloc&) {  // the class library's exception for exhausted memory
    outcome.error = ZorErrorFileFailure;
  } catch (...) {
    outcome.foreign = std::current_exception();
  }
  return outcome;
}
