// What a task really did, found out from its receipt and from what is there.
#pragma once

#include <optional>
#include <vector>

#include "services/receipts/Receipt.h"

namespace vantory {

// The steps of the task in its order, each of them done. Of one that was killed, or could not write its receipt to the
// end, the disk tells how far it came, but for what any of the other receipts claims.
std::vector<ReceiptStep> deedsOf(const Receipt& receipt, const std::vector<Receipt>& all);

// What took another task back, together with the earlier attempts at that, which were broken off: one receipt that says
// what all of them did. Any other receipt as it is.
Receipt withEarlierAttempts(const Receipt& receipt, const std::vector<Receipt>& all);

// What deedsOf() the receipt, without what later tasks took back already.
std::vector<ReceiptStep> deedsLeftOf(const Receipt& receipt, const std::vector<Receipt>& all);

// Whether it is still what the task put there; none where it cannot be looked at. Of a task that was killed, a folder
// that it was filling is.
std::optional<bool> isUnchanged(const ReceiptStep& deed, const Receipt& receipt);

}  // namespace vantory
