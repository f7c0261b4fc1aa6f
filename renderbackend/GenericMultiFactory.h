#pragma once

#include "renderbackend/VelmoraException.h"

#include <map>
#include <memory>
#include <stdexcept>
#include <utility>

/// Makes one kind of product from one argument.
template <class Product, class Argument>
class GenericFactory {
public:
    GenericFactory() = default;
    GenericFactory(GenericFactory const&) = default;
    GenericFactory& operator=(GenericFactory const&) = default;
    virtual ~GenericFactory() = default;

    virtual std::unique_ptr<Product> create(Argument argument) const = 0;
};

/// Factories by name. Filled once, then only read; copies share the factories.
template <class Name, class Product, class Argument>
class GenericMultiFactory {
public:
    using Factory = GenericFactory<Product, Argument>;

    /// Makes a T, a class derived from Product that is constructed from the argument.
    template <class T>
    class SpecializedFactory : public Factory {
    public:
        std::unique_ptr<Product> create(Argument argument) const override { return std::make_unique<T>(argument); }
    };

    /// Stores a factory; an existing one of the name is replaced and released. Throws VelmoraException "no factory to
    /// register" for an empty pointer.
    void registerFactory(Name const& name, std::shared_ptr<Factory> factory) {
        if (!factory)
            throw VelmoraException("no factory to register",
                                   "void GenericMultiFactory::registerFactory(Name const& name, "
                                   "std::shared_ptr<Factory> factory)");
        factories_[name] = std::move(factory);
    }

    bool has(Name const& name) const { return factories_.count(name) != 0; }

    /// Throws a plain std::runtime_error "Invalid factory" for an unknown name.
    std::shared_ptr<Factory> get(Name const& name) const {
        auto const found = factories_.find(name);
        if (found == factories_.end()) throw std::runtime_error("Invalid factory");
        return found->second;
    }

    /// The product of get(name); exceptions of its constructor pass through.
    std::unique_ptr<Product> create(Name const& name, Argument argument) const { return get(name)->create(argument); }

private:
    std::map<Name, std::shared_ptr<Factory>> factories_;
};
