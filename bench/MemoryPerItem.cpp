// Memory of a cached item with its handle: what the allocator has given out for 10,000 and for
// 100,000 items that Controller::GetItem made, divided by their number. It counts the item, the
// cache's entry, the handle and all that hangs on it, names included; packed attributes, which the
// budget sets apart, are told beside it and taken off.
#include <malloc.h>

#include <cstdio>

#include "Floor.h"
#include "SampleLibrary.h"

namespace {

// Bytes given out, with what the allocator itself adds to each block.
std::size_t InUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// Mean size of the packed attributes as a block of the allocator.
double AttributeBytes(const std::filesystem::path& file) {
    const bench::Database database = bench::OpenByHand(file);
    const bench::Statement sizes =
        bench::Prepare(database, "SELECT length(attributes) FROM revision");
    double sum = 0;
    double count = 0;
    while (sqlite3_step(sizes.get()) == SQLITE_ROW) {
        const std::string packed(static_cast<std::size_t>(sqlite3_column_int(sizes.get(), 0)), 'x');
        // Short texts lie in the string itself.
        sum += packed.size() < 16
                   ? 0
                   : static_cast<double>(malloc_usable_size(const_cast<char*>(packed.data())) +
                                         sizeof(std::size_t));
        count += 1;
    }
    return sum / count;
}

void Measure(std::int64_t size) {
    bench::SampleLibrary& library = bench::SampleLibrary::OfSize(size);
    kxct::Controller& controller = library.Controller();
    // Page cache and prepared statements are there before the count begins.
    for (const kxString& uid : library.Uids()) {
        controller.GetItem(uid, false);
    }
    controller.ClearCache(kxct::MANAGER_DEFAULT);
    const std::size_t before = InUse();
    for (const kxString& uid : library.Uids()) {
        controller.GetItem(uid, false);
    }
    const auto total = static_cast<double>(InUse() - before) / static_cast<double>(size);
    controller.ClearCache(kxct::MANAGER_DEFAULT);
    const double attributes = AttributeBytes(library.File());
    std::printf("%lld,%.0f,%.0f,%.0f\n",
                static_cast<long long>(size),
                total,
                attributes,
                total - attributes);
}

}  // namespace

int main() {
    std::puts("items,bytes,attributes,without");
    Measure(10000);
    Measure(100000);
    bench::SampleLibrary::CloseAll();
    return 0;
}
