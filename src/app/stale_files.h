// Files that interrupted runs leave behind: the working names under which a
// file is written before it is swapped in (parameters, logs, recordings,
// catalogues). A kill between the write and the swap leaves one for good.
#pragma once

#include <filesystem>
#include <vector>

namespace tfx {

// Removes, from each folder given (not below it), the working names of
// processes other than this one. In a folder only this process may use (the
// program folder and the data folder, both locked), any other owner is gone;
// elsewhere a name is kept while its owner still runs. Returns how many went.
int gf_removeStaleTemporaries(const std::vector<std::filesystem::path>& ownFolders,
                              const std::vector<std::filesystem::path>& sharedFolders);

// The same for the folders a session writes into, and the folder of the
// simulator's recording when one is asked for.
int gf_removeSessionLeftovers();

}  // namespace tfx
