// Shared by the tests.
