// A library that offers nothing.
