cmake_minimum_required(VERSION 3.25)
project(velmora-readme LANGUAGES CXX)
