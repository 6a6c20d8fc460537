// Placeholder until the entry points land.
