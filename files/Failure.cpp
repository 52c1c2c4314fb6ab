// Failure.cpp - failures and exceptions as values of ZorError.
#include "files/Failure.h"

#include <new>

ZorError ZorErrorFromException(const CException& exception) {
  const auto* file = dynamic_cast<const CFileException*>(&exception);
  const bool full = file != nullptr && file->m_cause == CFileException::diskFull;
  return full ? ZorErrorDiskFull : ZorErrorFileFailure;
}

ZorOutcome ZorGuard(const std::function<void()>& stretch) {
  ZorOutcome outcome;
  try {
    stretch();
    outcome.complete = true;
  } catch (const ZorStopped&) {
  } catch (const ZorFailure& failure) {
    outcome.error = failure.error;
  } catch (CException* exception) {  // NOLINT(misc-throw-by-value-catch-by-reference)
    outcome.error = ZorErrorFromException(*exception);
    exception->Delete();
  } catch (const std::bad_alloc&) {  // what the class library throws when memory is exhausted
    outcome.error = ZorErrorFileFailure;
  } catch (...) {
    outcome.foreign = std::current_exception();
  }
  return outcome;
}
