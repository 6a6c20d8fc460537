#include "stavio/app/demo_document.h"

#include "stavio/document_builder.h"

namespace stavio::app {

Document BuildDemoDocument()
{
    return DocumentBuilder()
        .Measures(kDemoMeasures, 4, kEduPerQuarter)
        .Staff("Piano", "Pno.")
        .Staff("Drums", "Dr.")
        .DrumStaff(kDemoDrumSlot)
        .Build();
}

}   // namespace stavio::app
