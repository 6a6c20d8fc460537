// Placeholder until the insertion driver lands: nothing is inserted.
#include "tamberlyne/plugin/groove_insertion.h"

bool DoYourThing(EDLG, uint32_t*)
{
    return false;
}

bool CheckNoTimeSignatureChanges()
{
    return true;
}

bool CheckOverwritingNotes()
{
    return true;
}
