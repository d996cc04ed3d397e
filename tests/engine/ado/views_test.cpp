// Who is told what happens to shared rows, while they come and go.
#include "engine/ado/views.h"

#include "engine/ado/recordset.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

using namespace ado;

TEST(Views, EachIsVisitedOnceInTheOrderTheyCame) {
    Recordset first;
    Recordset second;
    Views views;
    views.add(first);
    views.add(second);
    std::vector<Recordset*> visited;
    views.each([&](Recordset& view) { visited.push_back(&view); });
    EXPECT_EQ(visited, (std::vector<Recordset*>{&first, &second}));
}

TEST(Views, WhatIsRemovedIsNotVisitedAnyMore) {
    Recordset first;
    Recordset second;
    Recordset third;
    Views views;
    for (Recordset* view : {&first, &second, &third}) views.add(*view);
    views.remove(first);
    std::vector<Recordset*> visited;
    views.each([&](Recordset& view) {
        visited.push_back(&view);
        views.remove(third);
    });
    EXPECT_EQ(visited, std::vector<Recordset*>{&second});
}

TEST(Views, WhatIsAddedMeanwhileIsNotVisited) {
    Recordset first;
    std::vector<std::unique_ptr<Recordset>> others;
    Views views;
    views.add(first);
    int visits = 0;
    views.each([&](Recordset&) {
        ++visits;
        others.push_back(std::make_unique<Recordset>());
        views.add(*others.back());
    });
    EXPECT_EQ(visits, 1);
    views.each([&](Recordset&) { ++visits; });
    EXPECT_EQ(visits, 3);
}

}  // namespace
