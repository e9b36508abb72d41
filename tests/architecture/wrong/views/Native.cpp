#include "Neighbour.h"
#include "ui_Generated.h"

#include <mntent.h>
#include <poll.h>
#include <pwd.h>
#include <sched.h>
#include <spawn.h>

#ifdef Q_OS_WIN
#endif

class IxoFile;
