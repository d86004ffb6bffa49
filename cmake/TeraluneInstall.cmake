# Filled with the install rules and the package config.
