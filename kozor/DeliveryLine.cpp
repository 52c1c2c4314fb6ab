// DeliveryLine.cpp - see DeliveryLine.h.
#include "DeliveryLine.h"

#include <system_error>
#include <utility>

#include "Console.h"
#include "Failure.h"
#include "Host.h"
#include "ZorFileServices.h"

namespace kozor::program {

namespace {

// Limits of what waits to be written.
constexpr std::size_t kMostFiles = 64;
constexpr std::uint64_t kMostBytes = 4 << 20;
// Waking the writer for each file would cost more than a small file does.
constexpr std::size_t kFilesPerWakeUp = 8;

}  // namespace

void DeliveryLine::Entry::Write() noexcept {
  try {
    file->Finish(facts.mode, facts.lastWrite);
    file.reset();
  } catch (...) {
    failure = std::current_exception();
  }
}

DeliveryLine::DeliveryLine(Delivery& target, std::function<void(const Item&)> whenDelivered)
    : delivery(target), delivered(std::move(whenDelivered)) {
  if (std::thread::hardware_concurrency() < 2) return;
  try {
    writer = std::thread([this] { Work(); });
  } catch (const std::system_error&) {
    // The system allows no more threads: files are written at once.
  }
}

DeliveryLine::~DeliveryLine() {
  {
    const std::lock_guard lock(mutex);
    isStopping = true;
  }
  hasCome.notify_one();
  if (writer.joinable()) writer.join();
}

void DeliveryLine::Work() {
  std::unique_lock lock(mutex);
  for (;;) {
    hasCome.wait(lock, [&] { return isStopping || !waiting.empty(); });
    if (isStopping) return;
    Entry* const entry = waiting.front();
    waiting.pop_front();
    lock.unlock();
    entry->Write();
    lock.lock();
    entry->isWritten = true;
    isDone.notify_one();
  }
}

void DeliveryLine::Put(std::unique_ptr<Entry> entry) {
  heldBytes += entry->item.size;
  Entry* const added = entry.get();
  entries.push_back(std::move(entry));
  if (!writer.joinable()) {
    added->Write();
    added->isWritten = true;
  } else {
    const std::lock_guard lock(mutex);
    waiting.push_back(added);
    if (waiting.size() >= kFilesPerWakeUp) hasCome.notify_one();
  }
  while (!entries.empty() && FirstIsWritten()) DeliverFirst();
  while (entries.size() > kMostFiles || heldBytes > kMostBytes) {
    AwaitFirst();
    DeliverFirst();
  }
}

void DeliveryLine::Finish() {
  while (!entries.empty()) {
    AwaitFirst();
    DeliverFirst();
  }
}

bool DeliveryLine::FirstIsWritten() {
  const std::lock_guard lock(mutex);
  return entries.front()->isWritten;
}

void DeliveryLine::AwaitFirst() {
  std::unique_lock lock(mutex);
  hasCome.notify_one();
  isDone.wait(lock, [&] { return entries.front()->isWritten; });
}

void DeliveryLine::DeliverFirst() {
  const std::unique_ptr<Entry> entry = std::move(entries.front());
  entries.pop_front();
  heldBytes -= entry->item.size;
  try {
    Deliver(*entry);
    delivered(entry->item);
  } catch (const FileFailure& failure) {
    delivery.Work().Remove(entry->workName);
    Complain(VisibleLibraryName(entry->item.name) + ": " + failure.what());
  }
}

void DeliveryLine::Deliver(Entry& entry) {
  if (entry.failure) std::rethrow_exception(entry.failure);
  // A file without a stored attribute already has the default one.
  if (entry.facts.attribute != FILE_ATTRIBUTE_ARCHIVE) {
    ZorSetFileAttribute(entry.folder.LibraryPathOf(entry.workName).c_str(), entry.facts.attribute);
  }
  delivery.Deliver(entry.item, entry.workName, entry.order);
}

}  // namespace kozor::program
