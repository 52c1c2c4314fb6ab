// DeliveryLine.h - writes new files on a thread of its own, and delivers them in their order.
//
// Unpacking a member and writing the one before it overlap.  Everything that can need the user or
// moves a file to its place stays on the caller's thread.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "Delivery.h"
#include "WorkFolder.h"

namespace kozor::program {

// What a file gets besides its contents.
struct FileFacts {
  unsigned int mode = 0;        // permission bits, unless 0
  std::uint64_t lastWrite = 0;  // 100 ns since 1601
  std::uint8_t attribute = 0;   // DOS bits
};

class DeliveryLine {
 public:
  // `whenDelivered` is called after each file that has its place.  A file that can't be written or
  // delivered is complained about.
  DeliveryLine(Delivery& target, std::function<void(const Item&)> whenDelivered);
  // Files that aren't delivered yet are lost.
  ~DeliveryLine();
  DeliveryLine(const DeliveryLine&) = delete;
  DeliveryLine& operator=(const DeliveryLine&) = delete;

  // Calls fill(span), which makes the contents, then lets the file be written and delivered.
  // Rethrows what `fill` throws, without a file.
  template <typename Fill>
  void Add(const Item& item, Order order, const FileFacts& facts, Fill fill) {
    auto entry = std::make_unique<Entry>(delivery.Work(), std::to_string(++made), item,
                                         std::move(order), facts);
    try {
      entry->Open();
      fill(entry->file->Contents());
    } catch (...) {
      delivery.Work().Remove(entry->workName);
      throw;
    }
    Put(std::move(entry));
  }

  // Delivers what is left.
  void Finish();

 private:
  struct Entry {
    Entry(const WorkFolder& workFolder, std::string fileName, Item fileItem, Order fileOrder,
          const FileFacts& fileFacts)
        : folder(workFolder),
          workName(std::move(fileName)),
          item(std::move(fileItem)),
          order(std::move(fileOrder)),
          facts(fileFacts) {}
    void Open() { file = std::make_unique<NewFile>(folder, workName, item.size); }
    void Write() noexcept;

    const WorkFolder& folder;
    const std::string workName;
    const Item item;
    Order order;
    const FileFacts facts;
    std::unique_ptr<NewFile> file;  // until it is written
    std::exception_ptr failure;
    bool isWritten = false;  // guarded by the mutex
  };

  void Put(std::unique_ptr<Entry> entry);
  void Work();
  bool FirstIsWritten();
  void AwaitFirst();
  void DeliverFirst();
  void Deliver(Entry& entry);

  Delivery& delivery;
  const std::function<void(const Item&)> delivered;
  std::uint64_t made = 0;
  std::deque<std::unique_ptr<Entry>> entries;  // in the order of delivery
  std::uint64_t heldBytes = 0;

  std::mutex mutex;
  std::condition_variable hasCome;
  std::condition_variable isDone;
  std::deque<Entry*> waiting;
  bool isStopping = false;
  std::thread writer;
};

}  // namespace kozor::program
