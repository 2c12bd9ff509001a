// A livery catalogue for traffic tests: one generic livery "<model> livery"
// for each model named, published as the livery index, so that the spawn
// gate finds a title for any airline's aircraft of these models at the
// default matching depth (and for a private one at any depth from 2).
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "liveries/livery_index.h"
#include "liveries/reference_db.h"

namespace tfx::test {

inline void publishModelLiveries(const std::vector<std::string>& models = {
                                     "A319", "A320", "A321", "B738", "B744", "C172", "E170", "E175",
                                     "E190"}) {
    std::vector<Livery> list;
    for (const std::string& model : models)
        list.push_back(
            {model + " livery", "", gf_airlineIndex("ZZZ"), 0, gf_modelIndex(model), 0, 0});
    std::sort(list.begin(), list.end(), gf_liveryLess);
    auto index = std::make_shared<LiveryIndex>();
    gf_internLadderCodes(*index);
    std::vector<std::string> clashes;
    gf_indexLiveries(list, *index, clashes);
    lf_createModelSorted(*index);
    gf_publishLiveryIndex(std::move(index));
}

}  // namespace tfx::test
