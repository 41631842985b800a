// The foundation library's module handle (reference counted) and its raw
// allocator.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>

#include "Ordo/Allocator.h"
#include "Ordo/Module.h"

namespace {

int gInstance = 0;
void* const kInstance = &gInstance;

TEST(PlatformModule, CreateGivesOneReference) {
    const int before = Ordo::Module::LiveCount();
    {
        Ordo::SharedRef<Ordo::Module> module = Ordo::Module::Create(kInstance);
        ASSERT_TRUE(module);
        EXPECT_EQ(module.UseCount(), 1);
        EXPECT_EQ(module->InstanceHandle(), kInstance);
        EXPECT_EQ(Ordo::Module::LiveCount(), before + 1);
    }
    // The last reference destroyed the module through its virtual destructor.
    EXPECT_EQ(Ordo::Module::LiveCount(), before);
}

TEST(PlatformModule, CopiesShareAndResetsRelease) {
    const int before = Ordo::Module::LiveCount();
    Ordo::SharedRef<Ordo::Module> first = Ordo::Module::Create(kInstance);
    ASSERT_TRUE(first);
    Ordo::SharedRef<Ordo::Module> second = first;
    EXPECT_EQ(first.UseCount(), 2);
    EXPECT_EQ(second.get(), first.get());
    Ordo::SharedRef<Ordo::Module> third;
    EXPECT_FALSE(third);
    EXPECT_EQ(third.UseCount(), 0);
    third = second;
    EXPECT_EQ(first.UseCount(), 3);

    second.Reset();
    EXPECT_FALSE(second);
    EXPECT_EQ(second.get(), nullptr);
    EXPECT_EQ(first.UseCount(), 2);
    EXPECT_EQ(Ordo::Module::LiveCount(), before + 1);
    first.Reset();
    EXPECT_EQ(third.UseCount(), 1);
    EXPECT_EQ(Ordo::Module::LiveCount(), before + 1);
    third.Reset();
    EXPECT_EQ(Ordo::Module::LiveCount(), before);
    // Resetting an empty reference again is harmless.
    third.Reset();
    first.Reset();
    EXPECT_EQ(Ordo::Module::LiveCount(), before);
}

TEST(PlatformModule, MovesTransferTheReference) {
    const int before = Ordo::Module::LiveCount();
    Ordo::SharedRef<Ordo::Module> first = Ordo::Module::Create(nullptr);
    ASSERT_TRUE(first);
    Ordo::Module* object = first.get();
    Ordo::SharedRef<Ordo::Module> moved = std::move(first);
    EXPECT_FALSE(first);  // NOLINT: a moved-from reference is empty by contract
    EXPECT_EQ(moved.get(), object);
    EXPECT_EQ(moved.UseCount(), 1);
    EXPECT_EQ(moved->InstanceHandle(), nullptr);
    // Assigning over the last reference releases the module.
    moved = Ordo::SharedRef<Ordo::Module>();
    EXPECT_EQ(Ordo::Module::LiveCount(), before);
}

TEST(PlatformModule, SeveralModulesCountSeparately) {
    const int before = Ordo::Module::LiveCount();
    auto a = Ordo::Module::Create(kInstance);
    auto b = Ordo::Module::Create(kInstance);
    EXPECT_NE(a.get(), b.get());
    EXPECT_EQ(Ordo::Module::LiveCount(), before + 2);
    a.Reset();
    EXPECT_EQ(Ordo::Module::LiveCount(), before + 1);
    EXPECT_EQ(b.UseCount(), 1);
    b.Reset();
    EXPECT_EQ(Ordo::Module::LiveCount(), before);
}

TEST(PlatformAllocator, AllocateAndDispose) {
    void* block = Ordo::Allocator::Allocate(64);
    ASSERT_NE(block, nullptr);
    std::memset(block, 0x5A, 64);  // the whole block is writable
    EXPECT_EQ(static_cast<unsigned char*>(block)[63], 0x5A);
    Ordo::Allocator::Dispose(block);
    // A block for an atomic count is suitably aligned for it.
    void* count = Ordo::Allocator::Allocate(sizeof(std::int32_t));
    ASSERT_NE(count, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(count) % alignof(std::int32_t), 0u);
    Ordo::Allocator::Dispose(count);
    // Disposing null is allowed and does nothing.
    Ordo::Allocator::Dispose(nullptr);
}

TEST(PlatformAllocator, ImpossibleSizesAnswerNull) {
    // More than any address space can hold: null, never an exception.
    EXPECT_EQ(Ordo::Allocator::Allocate(std::numeric_limits<std::size_t>::max()), nullptr);
    EXPECT_EQ(Ordo::Allocator::Allocate(static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()) + 1),
              nullptr);
}

}  // namespace
