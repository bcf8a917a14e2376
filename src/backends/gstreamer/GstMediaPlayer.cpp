namespace xel {}
