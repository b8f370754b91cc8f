#!/usr/bin/env node
import { main } from '../lib/cli.mjs';

main(process.argv.slice(2));
