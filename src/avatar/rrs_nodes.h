// The resource file beside the executable that names the nodes the FBX conversion
// treats specially.
#pragma once

#include <string>
#include <unordered_set>

struct RrsNodeSets {
    std::unordered_set<std::string> ignoreNodeKeys;   // nodes whose local transform is not read
    std::unordered_set<std::string> inheritRrsNodes;  // nodes that get a scale compensation parent
};

// Reads <executable's folder>/resources/rrs_nodes.json, whatever the working folder, and
// prints its path. On a missing, unreadable or malformed file one line on standard error
// names the first fault and the result is false; sets may then hold a partial load.
bool LoadRrsNodes(RrsNodeSets& sets);

// LoadRrsNodes for a conversion that cannot go on without the file: a failed load ends the
// run with exit status 1, after the line that names the fault.
RrsNodeSets RequireRrsNodes();
