#include "renderbackend/GenericMultiFactory.h"

#include "renderbackend/Filter.h"
#include "renderbackend/VelmoraException.h"

#include <gtest/gtest.h>
#include <string>
#include <typeinfo>

namespace {

struct Product {
    explicit Product(Filter& filter) : description(&filter) {}
    Product(Product const&) = delete;
    Product& operator=(Product const&) = delete;
    virtual ~Product() = default;
    virtual std::string kind() const { return "plain"; }
    Filter* description;
};
struct Special : Product {
    explicit Special(Filter& filter) : Product(filter) { filter.setAlignXIn(2); }
    std::string kind() const override { return "special"; }
};
struct Refusing : Product {
    explicit Refusing(Filter& filter) : Product(filter) { throw VelmoraException("refused", "Refusing"); }
};

using Registry = GenericMultiFactory<std::string, Product, Filter&>;
template <class T>
std::shared_ptr<Registry::Factory> make() {
    return std::make_shared<Registry::SpecializedFactory<T>>();
}

// Type and text of the exception of get() or create() for a name.
template <class Operation>
std::string plainErrorOf(Operation const& operation) {
    try {
        operation();
    } catch (std::runtime_error const& error) {
        EXPECT_EQ(typeid(error), typeid(std::runtime_error)) << "not one of ours, not another subclass";
        return error.what();
    }
    return "nothing was thrown";
}

TEST(GenericMultiFactoryTest, CreatesTheRegisteredClassFromTheArgument) {
    Registry registry;
    registry.registerFactory("plain", make<Product>());
    registry.registerFactory("special", make<Special>());
    Filter filter;
    std::unique_ptr<Product> const product = registry.create("special", filter);
    EXPECT_EQ(product->kind(), "special");
    EXPECT_EQ(product->description, &filter) << "the argument itself, not a copy of it";
    EXPECT_EQ(filter.alignXIn(), 2u);
    EXPECT_EQ(registry.create("plain", filter)->kind(), "plain");
}

TEST(GenericMultiFactoryTest, RegisteringNoFactoryIsRefusedAndTheOldOneStays) {
    Registry registry;
    registry.registerFactory("plain", make<Product>());
    for (std::string const name : {"plain", "new"}) {
        try {
            registry.registerFactory(name, nullptr);
            ADD_FAILURE() << "nothing was thrown";
        } catch (VelmoraException const& failure) {
            EXPECT_STREQ(failure.what(), "#Name:no factory to register#Location:void GenericMultiFactory::"
                                         "registerFactory(Name const& name, std::shared_ptr<Factory> factory)");
        }
    }
    Filter filter;
    EXPECT_EQ(registry.create("plain", filter)->kind(), "plain");
    EXPECT_FALSE(registry.has("new"));
}

TEST(GenericMultiFactoryTest, HasTellsRegisteredNamesOnly) {
    Registry registry;
    EXPECT_FALSE(registry.has("a"));
    registry.registerFactory("a", make<Product>());
    EXPECT_TRUE(registry.has("a"));
    EXPECT_FALSE(registry.has("A"));
    EXPECT_FALSE(registry.has("a "));
    EXPECT_FALSE(registry.has(""));
}

TEST(GenericMultiFactoryTest, GetReturnsTheStoredFactory) {
    Registry registry;
    std::shared_ptr<Registry::Factory> const factory = make<Product>();
    registry.registerFactory("a", factory);
    EXPECT_EQ(registry.get("a"), factory);
}

TEST(GenericMultiFactoryTest, RegisteringANameAgainKeepsOnlyTheSecondFactory) {
    Registry registry;
    std::shared_ptr<Registry::Factory> first = make<Product>();
    std::weak_ptr<Registry::Factory> const watch = first;
    registry.registerFactory("a", std::move(first));
    EXPECT_FALSE(watch.expired());
    registry.registerFactory("a", make<Special>());
    EXPECT_TRUE(watch.expired()) << "released";
    Filter filter;
    EXPECT_EQ(registry.create("a", filter)->kind(), "special");
}

TEST(GenericMultiFactoryTest, GetOfAnUnknownNameThrowsAPlainRuntimeError) {
    Registry registry;
    registry.registerFactory("a", make<Product>());
    EXPECT_EQ(plainErrorOf([&] { registry.get("b"); }), "Invalid factory");
}

TEST(GenericMultiFactoryTest, GetOfTheEmptyNameThrowsWhereNoneIsRegistered) {
    Registry const registry;
    EXPECT_EQ(plainErrorOf([&] { registry.get(""); }), "Invalid factory");
}

TEST(GenericMultiFactoryTest, TheEmptyNameCanBeRegistered) {
    Registry registry;
    registry.registerFactory("", make<Special>());
    Filter filter;
    EXPECT_TRUE(registry.has(""));
    EXPECT_EQ(registry.create("", filter)->kind(), "special");
}

TEST(GenericMultiFactoryTest, CreateOfAnUnknownNameThrowsAPlainRuntimeErrorToo) {
    Registry const registry;
    Filter filter;
    EXPECT_EQ(plainErrorOf([&] { registry.create("b", filter); }), "Invalid factory");
}

TEST(GenericMultiFactoryTest, WhatAConstructorThrowsPassesThrough) {
    Registry registry;
    registry.registerFactory("r", make<Refusing>());
    Filter filter;
    EXPECT_THROW(registry.create("r", filter), VelmoraException);
}

TEST(GenericMultiFactoryTest, CopiesShareTheFactoriesButNotTheNames) {
    Registry original;
    original.registerFactory("a", make<Product>());
    Registry copy = original;
    EXPECT_EQ(copy.get("a"), original.get("a"));
    copy.registerFactory("b", make<Special>());
    EXPECT_FALSE(original.has("b"));
}

TEST(GenericMultiFactoryTest, ProductsOutliveTheRegistry) {
    auto registry = std::make_unique<Registry>();
    registry->registerFactory("a", make<Special>());
    Filter filter;
    std::unique_ptr<Product> const product = registry->create("a", filter);
    registry.reset();
    EXPECT_EQ(product->kind(), "special");
}

} // namespace
