// A library without the function that the library looks for.
