#pragma once

// The song sequence is a music-level computation now, so that exports can time their notes
// with it too; view mode keeps reaching it by its old name.
#include "music/songsequence.h"
