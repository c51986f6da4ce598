// The interfaces have no code of their own; this file makes sure that each header stands alone.
#include "platform/Appearance.h"
#include "platform/Clipboard.h"
#include "platform/FileManager.h"
#include "platform/FileSystem.h"
#include "platform/Log.h"
#include "platform/Shaper.h"
#include "platform/Trash.h"
#include "platform/UserDefaults.h"
