#pragma once

// From now on OpenSSL overwrites whatever it frees: certificates of the card that the toolkit parses with it, numbers
// of an agreement on keys. To be called before anything else uses OpenSSL; later it is refused and the answer is false.
bool cleanseCryptoMemory();
