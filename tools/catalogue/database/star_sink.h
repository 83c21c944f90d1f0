// Where stars go, one after the other.
#pragma once

#include "database/catalogue_star.h"

namespace lumivar {

class StarSink {
public:
    StarSink() = default;
    StarSink(const StarSink&) = delete;
    StarSink& operator=(const StarSink&) = delete;
    virtual ~StarSink() = default;

    /// Takes the next star. `input`: the number, from 0, of the file or catalogue that it comes
    /// from.
    virtual void add(const CatalogueStar& star, unsigned input) = 0;
};

}  // namespace lumivar
