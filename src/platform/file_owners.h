#pragma once

#include "platform/result.h"

#include <memory>
#include <string>

namespace tarnex {

// The users whom files belong to, for programs that the superuser may run too.
class FileOwners {
  public:
    // The program acts as another user until this goes.
    class Acting {
      public:
        virtual ~Acting() = default;
    };

    virtual ~FileOwners() = default;
    // The superuser acts from now on as the first owner other than the superuser of what leads to
    // path, each folder and link from the root on: whoever owns one could lead it astray, to the
    // files of others. What it makes then belongs to that owner, too. Where the path stands in a
    // file, named_in, whatever leads to that and the file itself come first; "" for none. Everybody
    // else acts as before. For a process of one thread, one at a time. Trouble
    // when the superuser may not do that; nothing has changed then.
    [[nodiscard]] virtual Result<std::unique_ptr<Acting>> ActFor(const std::string& path,
                                                                 const std::string& named_in) = 0;
    // Whether a file belongs to the owner and group of the folder that it stands in.
    virtual bool BelongsToFolderOwner(const std::string& path) const = 0;
    // Whether every user of this machine may read the file; false where that cannot be told.
    virtual bool AllMayRead(const std::string& path) const = 0;
};

} // namespace tarnex
